// SPDX-License-Identifier: GPL-3.0-or-later
#include "changes/ProtobufBody.h"

#include "base/Base64.h"
#include "base/Time.h"
#include "store/ApiError.h"

#include <charconv>
#include <map>
#include <sstream>
#include <string_view>

namespace tidewright::demo {

namespace {

// "number:name:type" of the fields that are read. Types: s text, i integer, z integer that counts as absent
// when 0, b flag, y bytes, t time, q quantity, [T] list, {T} map from text, else a message. Unlisted fields
// are dropped.
constexpr std::string_view messageTable = R"(
Unknown= 1:typeMeta:TypeMeta 2:raw:s
TypeMeta= 1:apiVersion:s 2:kind:s
Job= 1:metadata:ObjectMeta 2:spec:JobSpec
Deployment= 1:metadata:ObjectMeta 2:spec:DeploymentSpec
ConfigMap= 1:metadata:ObjectMeta 2:data:{s} 3:binaryData:{y} 4:immutable:b
Secret= 1:metadata:ObjectMeta 2:data:{y} 3:type:s 4:stringData:{s}
Namespace= 1:metadata:ObjectMeta
ServiceAccount= 1:metadata:ObjectMeta
ObjectMeta= 1:name:s 2:generateName:s 3:namespace:s 5:uid:s 6:resourceVersion:s 7:generation:z 8:creationTimestamp:t
    11:labels:{s} 12:annotations:{s} 13:ownerReferences:[OwnerReference] 14:finalizers:[s]
OwnerReference= 1:kind:s 3:name:s 4:uid:s 5:apiVersion:s 6:controller:b 7:blockOwnerDeletion:b
JobSpec= 1:parallelism:i 2:completions:i 3:activeDeadlineSeconds:i 4:selector:LabelSelector 5:manualSelector:b
    6:template:PodTemplateSpec 7:backoffLimit:i 8:ttlSecondsAfterFinished:i 9:completionMode:s 10:suspend:b
DeploymentSpec= 1:replicas:i 2:selector:LabelSelector 3:template:PodTemplateSpec
LabelSelector= 1:matchLabels:{s}
PodTemplateSpec= 1:metadata:ObjectMeta 2:spec:PodSpec
PodSpec= 2:containers:[Container] 3:restartPolicy:s 4:terminationGracePeriodSeconds:i 5:activeDeadlineSeconds:i
    6:dnsPolicy:s 7:nodeSelector:{s} 8:serviceAccountName:s 10:nodeName:s 19:schedulerName:s 20:initContainers:[Container]
Container= 1:name:s 2:image:s 3:command:[s] 4:args:[s] 5:workingDir:s 6:ports:[ContainerPort] 7:env:[EnvVar]
    8:resources:ResourceRequirements 13:terminationMessagePath:s 14:imagePullPolicy:s 20:terminationMessagePolicy:s
ContainerPort= 1:name:s 2:hostPort:z 3:containerPort:i 4:protocol:s 5:hostIP:s
EnvVar= 1:name:s 2:value:s
ResourceRequirements= 1:limits:{q} 2:requests:{q}
Quantity= 1:string:s
Time= 1:seconds:i
)";

struct Field
{
    std::string name;
    std::string type;
};
using Message = std::map<std::uint64_t, Field>;

const std::map<std::string, Message> &messages()
{
    static const std::map<std::string, Message> table = [] {
        std::map<std::string, Message> parsed;
        std::istringstream words{std::string(messageTable)};
        Message *message = nullptr;
        for (std::string word; words >> word;) {
            const size_t first = word.find(':'), second = word.rfind(':');
            if (first == word.npos) {
                message = &parsed[word.substr(0, word.size() - 1)];
            } else {
                (*message)[std::stoull(word)]
                    = {word.substr(first + 1, second - first - 1), word.substr(second + 1)};
            }
        }
        return parsed;
    }();
    return table;
}

[[noreturn]] void refuse()
{
    throw ApiError::badRequest("the body of the request is not a protobuf object");
}

std::uint64_t takeVarint(std::string_view &bytes)
{
    std::uint64_t value = 0;
    for (unsigned shift = 0; shift < 64 && !bytes.empty(); shift += 7) {
        const auto byte = static_cast<unsigned char>(bytes.front());
        bytes.remove_prefix(1);
        value |= std::uint64_t(byte & 127) << shift;
        if (byte < 128) {
            return value;
        }
    }
    refuse();
}

std::string_view takeBytes(std::string_view &bytes, std::uint64_t size)
{
    if (size > bytes.size()) {
        refuse();
    }
    const std::string_view taken = bytes.substr(0, size);
    bytes.remove_prefix(size);
    return taken;
}

json decodeMessage(std::string_view bytes, const std::string &name);

json decodeContent(std::string_view content, const std::string &type)
{
    if (type == "s") {
        return std::string(content);
    }
    if (type == "y") {
        return base64(std::string(content));
    }
    if (type == "q") {
        return textAt(decodeMessage(content, "Quantity"), "/string");
    }
    if (type == "t") {
        const long long seconds = numberAt(decodeMessage(content, "Time"), "/seconds");
        return seconds == 0 ? json() : json(timestamp(seconds));
    }
    return decodeMessage(content, type);
}

void store(json &object, const Field &field, std::string_view content)
{
    const char form = field.type.front();
    const std::string inner = field.type.substr(1, field.type.size() - 2);
    if (form == '[') {
        object[field.name].push_back(decodeContent(content, inner));
    } else if (form == '{') {
        std::string_view key, value;
        while (!content.empty()) {
            const std::uint64_t tag = takeVarint(content);
            (tag >> 3 == 1 ? key : value) = takeBytes(content, takeVarint(content));
        }
        object[field.name][std::string(key)] = decodeContent(value, inner);
    } else if (json value = decodeContent(content, field.type); !value.is_null() && value != json("")) {
        // The encoding does not tell an empty text from a missing one.
        object[field.name] = std::move(value);
    }
}

json decodeMessage(std::string_view bytes, const std::string &name)
{
    const Message &message = messages().at(name);
    json object = json::object();
    while (!bytes.empty()) {
        const std::uint64_t tag = takeVarint(bytes);
        const auto field = message.find(tag >> 3);
        const bool known = field != message.end();
        switch (tag & 7) {
        case 0: {
            const std::uint64_t value = takeVarint(bytes);
            if (known && field->second.type == "b") {
                object[field->second.name] = value != 0;
            } else if (known && (field->second.type == "i" || (field->second.type == "z" && value != 0))) {
                object[field->second.name] = static_cast<std::int64_t>(value);
            }
            break;
        }
        case 1:
            takeBytes(bytes, 8);
            break;
        case 2: {
            const std::string_view content = takeBytes(bytes, takeVarint(bytes));
            if (known && field->second.type.find_first_of("izb") != 0) {
                store(object, field->second, content);
            }
            break;
        }
        case 5:
            takeBytes(bytes, 4);
            break;
        default:
            refuse();
        }
    }
    return object;
}

} // namespace

json objectFromProtobuf(const std::string &body)
{
    static constexpr std::string_view magic("k8s\0", 4);
    if (!body.starts_with(magic)) {
        refuse();
    }
    const json envelope = decodeMessage(std::string_view(body).substr(magic.size()), "Unknown");
    const std::string kind = textAt(envelope, "/typeMeta/kind");
    bool isServedKind = false;
    for (const ResourceType &type : resourceTypes()) {
        isServedKind = isServedKind || type.kind == kind;
    }
    if (!isServedKind || !messages().contains(kind)) {
        throw ApiError(
            415, "UnsupportedMediaType", "the demo cluster does not read " + kind + " objects in protobuf");
    }
    json object = decodeMessage(textAt(envelope, "/raw"), kind);
    object["apiVersion"] = textAt(envelope, "/typeMeta/apiVersion");
    object["kind"] = kind;
    return object;
}

} // namespace tidewright::demo
