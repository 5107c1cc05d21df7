// SPDX-License-Identifier: GPL-3.0-or-later
#include <pybind11/pybind11.h> // first: it has an own idea of the standard headers' feature macros

#include "actions/EmbeddedPython.h"

#include "platform/Bundle.h"
#include "platform/Diagnostics.h"
#include "platform/DispatchQueue.h"

#include <QFile>
#include <QFileInfo>
#include <QStringList>

namespace tidewright {

namespace {

namespace py = pybind11;

bool isFine(const PyStatus &status)
{
    if (PyStatus_Exception(status)) {
        writeDiagnostic(QLatin1String("Python could not be loaded: ")
            + QString::fromUtf8(status.err_msg ? status.err_msg : "unknown error"));
        return false;
    }
    return true;
}

/// False, with the reason on the standard output, when there is no interpreter to be had.
bool initialise()
{
    // The locale and the environment are the application's, and other threads are reading them.
    PyPreConfig preconfig;
    PyPreConfig_InitPythonConfig(&preconfig);
    preconfig.configure_locale = 0;
    preconfig.coerce_c_locale = 0;
    preconfig.utf8_mode = 1;
    if (!isFine(Py_PreInitialize(&preconfig))) {
        return false;
    }
    PyConfig config;
    PyConfig_InitPythonConfig(&config);
    config.install_signal_handlers = 0; // Ctrl+C in the terminal ends the application, not a script
    const bool fine = isFine(Py_InitializeFromConfig(&config));
    PyConfig_Clear(&config);
    return fine;
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
        writeDiagnostic(QLatin1String("Python could not be asked: ") + QString::fromUtf8(error.what()));
    }
}

} // namespace

void prepareEmbeddedPython()
{
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
    static DispatchQueue queue("python"); // lives on: its threads may be loading when the process ends
    queue.post([] {
        if (initialise()) {
            describeInterpreter();
            PyEval_SaveThread(); // whoever runs Python takes the lock for that long
        }
    });
}

} // namespace tidewright
