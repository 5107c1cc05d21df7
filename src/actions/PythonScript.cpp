// SPDX-License-Identifier: GPL-3.0-or-later
#include <pybind11/pybind11.h> // first: it has an own idea of the standard headers' feature macros

#include "actions/PythonScript.h"

#include "actions/ActionQueue.h"
#include "actions/CustomActionItem.h"
#include "actions/EmbeddedPython.h"
#include "actions/RunningScript.h"
#include "platform/desktop/Diagnostics.h"
#include "platform/threads/MainQueue.h"

#include <QFileInfo>

#include <mutex>

namespace tidewright {

namespace py = pybind11;

struct PythonScript::Run
{
    ActionEnvironment environment;
    std::shared_ptr<const KubeConfigView> view;
    py::object hostRun; ///< what the module tidewright_host keeps of it
    py::object pythonActionModule;
    py::object pythonActionInstance;

    /// Destroyed on a thread that may wait for the interpreter's lock; the main thread never does.
    static std::shared_ptr<Run> create(
        const ActionEnvironment &environment, std::shared_ptr<const KubeConfigView> view)
    {
        return {new Run{environment, std::move(view), {}, {}, {}}, [](Run *run) {
                    customActionQueue().post([run] {
                        const py::gil_scoped_acquire lock;
                        forget(run->hostRun);
                        delete run;
                    });
                }};
    }
    static void forget(const py::object &hostRun)
    {
        try {
            if (hostRun) {
                hostRun.attr("forget")();
            }
        } catch (const std::exception &error) {
            writeDiagnostic(QString::fromUtf8(error.what()), DiagnosticStream::StandardError);
        }
    }
    QString place() const
    {
        const QString files = environment.value(QStringLiteral("KUBECONFIG"));
        return placeText(environment.value(QStringLiteral("CONTEXT")),
            environment.value(QStringLiteral("NAMESPACE")),
            view ? files.mid(view->path().size() + 1) : files); // the view stands in front
    }
};

struct PythonScript::Call
{
    std::shared_ptr<Run> run;
    const char *hostFunction; ///< of the module tidewright_host; its first argument is the run's instance
    py::tuple arguments; ///< the others
};

namespace {

constexpr std::chrono::seconds importLimit(10);

/// Held while a script is imported: the module "main" and os.environ, which scripts read at their head, are
/// the interpreter's own, and it gives its lock to others in the middle of an import. Taken without that
/// lock, which the import needs.
std::timed_mutex &importMutex()
{
    static std::timed_mutex mutex;
    return mutex;
}

py::module_ host()
{
    return py::module_::import("tidewright_host");
}

/// Texts cross the border as UTF-8 bytes, because Python's may hold what is no Unicode.
QString text(py::handle bytes)
{
    return QString::fromStdString(bytes.cast<std::string>());
}

py::str pythonText(const QString &value)
{
    return py::str(value.toStdString());
}

py::dict pythonTexts(const ActionEnvironment &environment)
{
    py::dict texts;
    for (auto entry = environment.begin(); entry != environment.end(); ++entry) {
        texts[pythonText(entry.key())] = pythonText(entry.value());
    }
    return texts;
}

std::optional<QString> optionalText(py::handle bytes)
{
    return bytes.is_none() ? std::nullopt : std::optional(text(bytes));
}

QStringList textList(py::handle list)
{
    QStringList texts;
    for (const py::handle element : list) {
        texts.append(text(element));
    }
    return texts;
}

FormField formField(py::handle row)
{
    const auto parts = py::reinterpret_borrow<py::tuple>(row);
    return {text(parts[0]), text(parts[1]), text(parts[2]), text(parts[3]), optionalText(parts[4]),
        textList(parts[5]), parts[6].cast<bool>()};
}

ActionRequest actionRequest(py::handle name, py::handle state, py::handle fields)
{
    using Kind = ActionRequest::Kind;
    static const QMap<QString, Kind> kinds{{QStringLiteral("OKDialog"), Kind::Dialog},
        {QStringLiteral("OKCancelDialog"), Kind::Dialog},
        {QStringLiteral("Notification"), Kind::Notification}, {QStringLiteral("FormDialog"), Kind::Form}};
    ActionRequest request;
    request.kind = kinds.value(text(name), Kind::None);
    for (const auto entry : py::reinterpret_borrow<py::dict>(state)) {
        request.state.insert(text(entry.first), text(entry.second));
    }
    for (const py::handle row : fields) {
        request.fields.push_back(formField(row));
    }
    return request;
}

/// The arguments with which a callback is told the answer.
py::tuple callbackArguments(const ActionAnswer &answer)
{
    if (const bool *first = std::get_if<bool>(&answer)) {
        return py::make_tuple(*first);
    }
    if (const auto *values = std::get_if<FormValues>(&answer)) {
        py::dict mapping;
        for (const auto &[name, value] : *values) {
            const bool *checked = std::get_if<bool>(&value);
            mapping[pythonText(name)] = checked ? py::object(py::bool_(*checked))
                                                : py::object(pythonText(std::get<QString>(value)));
        }
        return py::make_tuple(mapping);
    }
    return py::tuple();
}

void postLog(const QStringList &lines)
{
    if (!lines.isEmpty()) {
        mainQueue().post([lines] {
            for (const QString &line : lines) {
                postConsoleEntry(nullptr, line, QString(), std::nullopt);
            }
        });
    }
}

void postPythonException(const QString &description)
{
    postConsoleError(QLatin1String("Recieved python exception ") + description + QLatin1Char('.'));
}

void postImportException(const QString &description)
{
    postConsoleError(QLatin1String("Recieved exception ") + description + QLatin1Char('.'));
}

} // namespace

PythonScript::PythonScript(const QString &scriptURL)
    : Script(scriptURL)
{
}

void PythonScript::runScript(std::shared_ptr<CustomActionItem> item, ActionRun run)
{
    const auto complete = item->buildEnvironment(std::move(run.environment));
    if (!complete) {
        return;
    }
    const RunningScript running(std::move(run.console), item->title());
    writeDiagnostic(QLatin1String("Run python ") + scriptURL());
    if (const QString problem = waitForEmbeddedPython(); !problem.isEmpty()) {
        postImportException(problem);
        running.end();
        return;
    }
    std::unique_lock importing(importMutex(), importLimit);
    if (!importing) {
        postImportException(
            QStringLiteral("another Python action is still being loaded; try again when it is "
                           "done"));
        running.end();
        return;
    }
    const std::string folder = QFileInfo(scriptURL()).path().toStdString();
    {
        const py::gil_scoped_acquire lock;
        try {
            host().attr("begin")(folder);
            m_latest = Run::create(*complete, std::move(run.view));
            const std::shared_ptr<Run> latest = m_latest;
            const bool isLoaded = load(folder, *latest);
            importing.unlock();
            if (isLoaded && make(*latest)) {
                callPython({latest, "call", py::make_tuple("run")});
            }
        } catch (const std::exception &error) {
            postPythonException(QString::fromUtf8(error.what()));
        }
    }
    running.endAndWait();
    const py::gil_scoped_acquire lock;
    try {
        host().attr("finish")(folder);
    } catch (const std::exception &error) {
        postPythonException(QString::fromUtf8(error.what()));
    }
}

bool PythonScript::load(const std::string &folder, Run &run)
{
    const py::tuple imported = host().attr("load")(folder, pythonTexts(run.environment));
    run.hostRun = imported[0];
    run.pythonActionModule = imported[1];
    if (!imported[2].is_none()) {
        postImportException(text(imported[2]));
        return false;
    }
    return true;
}

bool PythonScript::make(Run &run)
{
    const py::tuple made = host().attr("make")(run.pythonActionModule);
    run.pythonActionInstance = made[0];
    if (!made[1].is_none()) {
        postPythonException(text(made[1]));
        return false;
    }
    return true;
}

void PythonScript::callPython(const Call &call)
{
    const py::tuple outcome = host().attr(call.hostFunction)(call.run->pythonActionInstance, *call.arguments);
    postLog(textList(outcome[0]));
    if (!outcome[1].is_none()) {
        ActionRequest request = actionRequest(outcome[1], outcome[2], outcome[3]);
        request.place = call.run->place();
        mainQueue().post([request, run = call.run] {
            showRequest(request, [run](const ActionAnswer &answer) { callBack(run, answer); });
        });
    } else if (!outcome[4].is_none()) {
        postPythonException(text(outcome[4]));
    }
}

void PythonScript::callBack(const std::shared_ptr<Run> &run, const ActionAnswer &answer)
{
    customActionQueue().post([run, answer] {
        const py::gil_scoped_acquire lock;
        try {
            callPython({run, "answer", py::make_tuple(run->hostRun) + callbackArguments(answer)});
        } catch (const std::exception &error) {
            postPythonException(QString::fromUtf8(error.what()));
        }
    });
}

} // namespace tidewright
