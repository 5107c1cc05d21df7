// SPDX-License-Identifier: GPL-3.0-or-later
#include "server/Kubeconfig.h"

#include "base/Base64.h"

#include <cstdlib>

#include <fcntl.h>
#include <unistd.h>

namespace tidewright::demo {

namespace {

bool writeAll(int file, const std::string &text)
{
    size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = ::write(file, text.data() + written, text.size() - written);
        if (count < 0) {
            return false;
        }
        written += size_t(count);
    }
    return true;
}

} // namespace

std::string kubeconfigText(
    const std::vector<KubeconfigContext> &contexts, int port, const std::string &authority)
{
    const std::string scheme = authority.empty() ? "http" : "https";
    std::string clusters, entries;
    for (const KubeconfigContext &context : contexts) {
        clusters += "- name: " + context.name + "\n  cluster:\n    server: " + scheme
            + "://127.0.0.1:" + std::to_string(port) + '/' + context.name + '\n';
        if (!authority.empty()) {
            clusters += "    certificate-authority-data: " + base64(authority) + '\n';
        }
        entries += "- name: " + context.name + "\n  context:\n    cluster: " + context.name
            + "\n    user: demo\n    namespace: " + context.ns + '\n';
    }
    return "apiVersion: v1\nkind: Config\ncurrent-context: " + contexts.front().name
        + "\npreferences: {}\nclusters:\n" + clusters + "contexts:\n" + entries
        + "users:\n- name: demo\n  user:\n    token: demo\n";
}

KubeconfigFile::KubeconfigFile(const std::string &path)
    : m_path(path)
{
    if (!path.empty()) {
        return;
    }
    const char *base = std::getenv("TMPDIR");
    m_folder = std::string(base && *base ? base : "/tmp") + "/tidewright-demo-XXXXXX";
    if (!mkdtemp(m_folder.data())) {
        m_folder.clear();
    }
    m_path = m_folder + "/kubeconfig";
}

bool KubeconfigFile::write(const std::string &text)
{
    // Written beside and renamed, so that nobody ever reads half a file.
    const std::string draft = m_path + ".new";
    const int file = open(draft.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (file < 0) {
        return false;
    }
    const bool written = writeAll(file, text);
    close(file);
    return written && rename(draft.c_str(), m_path.c_str()) == 0;
}

void KubeconfigFile::remove() const
{
    if (m_folder.empty()) {
        return;
    }
    unlink(m_path.c_str());
    rmdir(m_folder.c_str());
}

} // namespace tidewright::demo
