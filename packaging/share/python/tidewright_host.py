# SPDX-License-Identifier: GPL-3.0-or-later
"""The application's own side of the embedded interpreter. Scripts use tidewright_actions instead.

What comes from a script is not trusted to behave: whatever it raises is caught here, and what is handed to the
application has exactly the documented types. Texts are handed over as UTF-8 bytes.
"""
import builtins
import functools
import importlib
import importlib.machinery
import importlib.util
import io
import itertools
import os
import re
import subprocess
import sys
import threading
import traceback
import types

REQUESTS = ("OKDialog", "OKCancelDialog", "Notification", "FormDialog")
MOST_LOG_LINES = 20_000
MOST_FIELDS = 200
MOST_CHOICES = 2000
LONGEST_LINE = 4096
DEEPEST_RECURSION = 3000
PACKAGE_PREFIX = "tidewright_action_"
STACK_PER_LEVEL = 4096  # bytes; a sort whose key function sorts needs half of it


def prepare(write_line, stack_size):
    """Once, before any script runs. write_line takes one line of the diagnostics, as bytes.

    stack_size is what the threads of scripts have, in bytes.
    """
    global diagnostics, _base_environment
    diagnostics = Diagnostics(write_line)
    _base_environment = dict(os.environ)
    sys.stdin = io.StringIO()
    _redirect()
    _limit_recursion(min(DEEPEST_RECURSION, stack_size // STACK_PER_LEVEL))
    _keep_environment()
    _keep_modules_apart()


class Diagnostics(io.TextIOBase):
    """What scripts print, line by line; each thread's lines are its own."""

    encoding = "utf-8"
    errors = "backslashreplace"

    def __init__(self, write_line):
        self._write_line = write_line
        self._thread = threading.local()

    def writable(self):
        return True

    def write(self, text):
        *lines, rest = (getattr(self._thread, "rest", "") + text).split("\n")
        if len(rest) > LONGEST_LINE:
            lines, rest = lines + [rest], ""
        self._thread.rest = rest
        for line in lines:
            self._write_line(line.encode("utf-8", "backslashreplace"))
        return len(text)

    def close(self):
        """Stays open for the next script."""

    def end_line(self):
        if getattr(self._thread, "rest", ""):
            self.write("\n")


def _redirect():
    sys.stdout = sys.stderr = sys.__stdout__ = sys.__stderr__ = diagnostics


def _limit_recursion(deepest):
    """An exhausted stack would end the application."""
    set_limit = sys.setrecursionlimit
    sys.setrecursionlimit = lambda limit: set_limit(min(limit, deepest))
    sys.setrecursionlimit(sys.getrecursionlimit())


def _keep_environment():
    """os.environ stays the interpreter's: its children get it, the application around it does not.

    The application reads its own environment on other threads, while the C library would be changing it; and the
    kubeconfig of one action must not become that of every window.
    """
    os.putenv = lambda key, value: None
    os.unsetenv = lambda key: None
    initialise = subprocess.Popen.__init__
    position = 11  # of `env` among the arguments of Popen, with self

    @functools.wraps(initialise)
    def with_environment(*arguments, **options):
        if len(arguments) <= position and options.get("env") is None:
            options["env"] = dict(os.environ)
        initialise(*arguments, **options)

    def system(command):
        status = subprocess.call(command, shell=True)
        return status << 8 if status >= 0 else -status

    subprocess.Popen.__init__ = with_environment
    os.system = system


class _SearchPath:
    """sys.path, with the folders of the scripts that run behind what it was before, the latest first.

    What a script adds itself stays as long as any runs.
    """

    def __init__(self):
        self._lock = threading.Lock()
        self._folders = []
        self._before = []

    def add(self, folder):
        with self._lock:
            if not self._folders:
                self._before = list(sys.path)
            elif not isinstance(sys.path, list):
                sys.path = self._before + self._folders
            latest = self._folders[0] if self._folders else None
            sys.path.insert(sys.path.index(latest) if latest in sys.path else len(sys.path), folder)
            self._folders.insert(0, folder)

    def remove(self, folder):
        with self._lock:
            self._folders.remove(folder)
            if not self._folders:
                sys.path = self._before
            elif isinstance(sys.path, list) and folder in sys.path:
                sys.path.remove(folder)


_search_path = _SearchPath()


_packages = {}  # folder of an action: name of the package that stands for it


def _package(folder):
    """A package whose modules are the files beside an action's script.

    What the script imports from its folder is imported from there. So each action has modules of its own, whatever
    others name theirs, and finds them at any time, not only while its folder is on the search path.
    """
    if folder not in _packages:
        package = types.ModuleType(f"{PACKAGE_PREFIX}{len(_packages) + 1}")
        package.__path__ = [folder]
        sys.modules[package.__name__] = package
        _packages[folder] = package.__name__
    return _packages[folder]


def _keep_modules_apart():
    """Has what stands in an action's own modules look into the action's folder first."""
    plain_import = builtins.__import__

    @functools.wraps(plain_import)
    def import_module(name, globals=None, locals=None, fromlist=(), level=0):
        package = (globals or {}).get("__package__") if level == 0 else None
        package = package.partition(".")[0] if isinstance(package, str) else None
        if not package or package not in _packages.values() or not isinstance(name, str):
            return plain_import(name, globals, locals, fromlist, level)
        first = package + "." + name.partition(".")[0]
        if not _is_own(first, sys.modules[package].__path__):
            return plain_import(name, globals, locals, fromlist, level)
        module = plain_import(package + "." + name, globals, locals, fromlist, 0)
        return module if fromlist else sys.modules[first]

    builtins.__import__ = import_module


def _is_own(name, path):
    if name in sys.modules:
        return True
    spec = importlib.machinery.PathFinder.find_spec(name, path)
    return spec is not None and spec.has_location  # a folder that holds no module is none


def _import_main(folder):
    """The script as the module "main", from its own folder whatever else the search path holds."""
    spec = importlib.machinery.PathFinder.find_spec("main", [folder])
    if spec is None or spec.loader is None:
        raise ModuleNotFoundError("No module named 'main'", name="main")
    package = _package(folder)
    module = importlib.util.module_from_spec(spec)
    module.__package__ = package
    names = ("main", package + ".main")
    sys.modules.update(dict.fromkeys(names, module))
    try:
        spec.loader.exec_module(module)
    except BaseException:
        for name in names:
            sys.modules.pop(name, None)
        raise
    return module


def begin(folder):
    """A script from that folder is about to be loaded."""
    _redirect()
    _search_path.add(folder)


def finish(folder):
    """It has ended; its callbacks may still be called."""
    _search_path.remove(folder)


_run = threading.local()  # the run whose script this thread is in


def _enter(variables):
    _run.variables = variables
    os.environ.update(variables)


def run_environment():
    """The variables of the run that this thread is in, over what the application was started with."""
    return {**_base_environment, **_run.variables} if hasattr(_run, "variables") else dict(os.environ)


def load(folder, variables):
    """Sets the variables and imports the script of that folder. Returns the module and None, or None and why not."""
    try:
        _enter(variables)
        sys.modules.pop("main", None)
        importlib.invalidate_caches()
        return _import_main(folder), None
    except BaseException as error:
        return None, _description(error)
    finally:
        diagnostics.end_line()


def make(module):
    """Makes an instance of the script's class. Returns it and None, or None and why not."""
    try:
        return module.Action(), None
    except BaseException as error:
        return None, _description(error)
    finally:
        diagnostics.end_line()


def call(instance, function, *arguments):
    """Calls a function of the instance. Returns what the application has to do about it:

    log lines, the name of a request or None, its state, its form's rows, and what else was raised or None.
    """
    request, state, rows, problem = None, {}, [], None
    try:
        getattr(instance, function)(*arguments)
    except BaseException as error:
        name = _class_name(error)
        if name in REQUESTS:
            request, state = _utf8(name), _state(instance)
            rows = _rows(instance) if name == "FormDialog" else []
        else:
            problem = _description(error)
    diagnostics.end_line()
    return _log_lines(instance), request, state, rows, problem


def answer(instance, variables, *arguments):
    """Calls the instance back with the user's answer, if it waits for one. Returns the same as call.

    The variables of its run are set again: another may have been started since.
    """
    try:
        waits = getattr(instance, "_callback", None) is not None
    except BaseException as error:
        return [], None, {}, [], _description(error)
    if not waits:
        return [], None, {}, [], None
    _enter(variables)
    return call(instance, "_run_callback", *arguments)


def _class_name(error):
    return type.__dict__["__name__"].__get__(type(error))


def _utf8(text):
    return str.encode(text, "utf-8", "replace")


def _description(error):
    """The error's type and text; the diagnostics get the traceback."""
    try:
        traceback.print_exception(type(error), error, error.__traceback__, file=diagnostics)
        text = "".join(traceback.format_exception_only(type(error), error)).strip()
        return _utf8(re.sub(rf"\b{PACKAGE_PREFIX}\d+\.", "", text))
    except BaseException:
        return _utf8(_class_name(error))


def _log_lines(instance):
    try:
        lines = instance._logger.log
    except BaseException:
        return []
    if not isinstance(lines, list) or not all(isinstance(line, str) for line in lines):
        return []
    shown = [_utf8(line) for line in lines[-MOST_LOG_LINES:]]
    if len(lines) > MOST_LOG_LINES:
        shown.insert(0, _utf8(f"... {len(lines) - MOST_LOG_LINES} earlier lines are left out"))
    return shown


def _state(instance):
    try:
        state = dict(instance._state)
        if all(isinstance(text, str) for entry in state.items() for text in entry):
            return {_utf8(key): _utf8(value) for key, value in state.items()}
    except BaseException:
        pass
    return {}


def _rows(instance):
    """A tuple for each field: name, type, label, placeholder, initial or None, choices, checked."""
    rows = []
    try:
        fields = instance.form.fields
        for name in itertools.islice(fields.keys(), MOST_FIELDS):
            if isinstance(name, str):
                rows.append(_row(name, fields[name]))
    except BaseException as error:
        _description(error)
    return rows


def _row(name, field):
    def given(attribute):
        return getattr(field, attribute, None)

    def text(value, otherwise=None):
        return otherwise if value is None else _utf8(str(value))

    label = text(given("label"), _utf8(name))
    choices = [text(choice, b"") for choice in itertools.islice(given("choices") or (), MOST_CHOICES)]
    return (_utf8(name), text(given("field_type"), b""), label, text(given("placeholder"), b""),
            text(given("initial")), choices, bool(given("checked")))
