// SPDX-License-Identifier: GPL-3.0-or-later
#include <pybind11/pybind11.h> // first: it has an own idea of the standard headers' feature macros

#include "actions/EmbeddedPython.h"

#include "platform/desktop/Bundle.h"
#include "platform/desktop/Diagnostics.h"

#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <future>
#include <mutex>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace tidewright {

namespace {

namespace py = pybind11;

constexpr int niceness = 15;

constexpr std::size_t comfortableStack = 8 << 20; // bytes

/// What a thread gets that asks for nothing else, in bytes. It follows the limit of the shell that the
/// application was started from, and is small when there is no limit; it can be raised to `atLeast`.
std::size_t threadStackSize(std::size_t atLeast = 0)
{
    pthread_attr_t attributes;
    std::size_t size = 0;
    if (::pthread_getattr_default_np(&attributes) == 0) {
        ::pthread_attr_getstacksize(&attributes, &size);
        if (size < atLeast && ::pthread_attr_setstacksize(&attributes, atLeast) == 0
            && ::pthread_setattr_default_np(&attributes) == 0) {
            size = atLeast;
        }
        ::pthread_attr_destroy(&attributes);
    }
    return size;
}

/// The interpreter on its way. Empty when it is there, else what is wrong with it.
struct Loading
{
    std::once_flag once;
    std::promise<QString> promise;
    std::shared_future<QString> problem = promise.get_future().share();
};

Loading &loading()
{
    static auto *state = new Loading; // outlives main(): scripts may still wait for it
    return *state;
}

QString problemOf(const PyStatus &status)
{
    return PyStatus_Exception(status) ? QString::fromUtf8(status.err_msg ? status.err_msg : "unknown error")
                                      : QString();
}

QString initialise()
{
    // The locale and the environment are the application's, and other threads are reading them.
    PyPreConfig preconfig;
    PyPreConfig_InitPythonConfig(&preconfig);
    preconfig.configure_locale = 0;
    preconfig.coerce_c_locale = 0;
    preconfig.utf8_mode = 1;
    if (const QString problem = problemOf(Py_PreInitialize(&preconfig)); !problem.isEmpty()) {
        return problem;
    }
    PyConfig config;
    PyConfig_InitPythonConfig(&config);
    config.install_signal_handlers = 0; // Ctrl+C in the terminal ends the application, not a script
    config.write_bytecode = 0; // scripts change, and their folders are the user's
    const QString problem = problemOf(Py_InitializeFromConfig(&config));
    PyConfig_Clear(&config);
    return problem;
}

void describeInterpreter()
{
    try {
        const py::module_ sys = py::module_::import("sys");
        const std::string version = py::str(sys.attr("version"));
        const std::string path = py::str(sys.attr("path"));
        writeDiagnostic(QLatin1String("Python Version: ") + QString::fromStdString(version));
        writeDiagnostic(QLatin1String("Python Path: ") + QString::fromStdString(path));
    } catch (const std::exception &error) {
        writeDiagnostic(QLatin1String("Python could not be asked: ") + QString::fromUtf8(error.what()),
            DiagnosticStream::StandardError);
    }
}

void writeLine(const std::string &line)
{
    writeDiagnostic(QString::fromStdString(line));
}

/// Makes the interpreter fit to live inside an application; see the module tidewright_host.
QString prepareForActions()
{
    const QString modules = bundle::resource(QStringLiteral("python"));
    try {
        // Made by a later thread, the binding's own record would keep that thread's state beyond its end.
        py::detail::get_internals();
        py::module_::import("sys").attr("path").attr("append")(modules.toStdString());
        py::module_::import("tidewright_host")
            .attr("prepare")(py::cpp_function(writeLine), threadStackSize());
    } catch (const std::exception &error) {
        return QStringLiteral("Python could not be prepared: ") + QString::fromUtf8(error.what());
    }
    return {};
}

QString load()
{
    QString problem = initialise();
    if (!problem.isEmpty()) {
        return QLatin1String("Python could not be loaded: ") + problem;
    }
    describeInterpreter();
    problem = prepareForActions();
    PyEval_SaveThread(); // whoever runs Python takes the lock for that long
    return problem;
}

} // namespace

void prepareEmbeddedPython()
{
    threadStackSize(comfortableStack);
    const QString version = QStringLiteral("%1.%2").arg(PY_MAJOR_VERSION).arg(PY_MINOR_VERSION);
    const QString library = bundle::resource(QStringLiteral("python%1/libpython%1.so").arg(version));
    if (library.isEmpty()) {
        return;
    }
    const QString home = QFileInfo(library).path();
    const QString zip = QStringLiteral("python%1%2").arg(PY_MAJOR_VERSION).arg(PY_MINOR_VERSION);
    const QStringList path{QStringLiteral("%1/lib/%2.zip/%2").arg(home, zip),
        QStringLiteral("%1/lib/python%2").arg(home, version),
        QStringLiteral("%1/lib/python%2/lib-dynload").arg(home, version),
        home + QLatin1String("/lib/site-packages")};
    qputenv("PYTHON_LIBRARY", QFile::encodeName(library));
    qputenv("PYTHONHOME", QFile::encodeName(home));
    qputenv("PYTHONPATH", QFile::encodeName(path.join(QLatin1Char(':'))));
}

void loadEmbeddedPython()
{
    std::call_once(loading().once, [] {
        // For Python this is the main thread, whose number must not pass to a thread with a script: it stays.
        std::thread([] {
            pthread_setname_np(pthread_self(), "python");
            // This thread only: the kubectl runs that bring the first rows come first.
            ::setpriority(PRIO_PROCESS, static_cast<id_t>(::syscall(SYS_gettid)), niceness);
            const QString problem = load();
            if (!problem.isEmpty()) {
                writeDiagnostic(problem);
            }
            loading().promise.set_value(problem);
            for (;;) {
                ::pause();
            }
        }).detach();
    });
}

QString waitForEmbeddedPython()
{
    loadEmbeddedPython();
    return loading().problem.get();
}

} // namespace tidewright
