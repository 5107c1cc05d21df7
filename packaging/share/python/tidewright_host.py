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
import multiprocessing
import os
import re
import signal
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
    _keep_process()
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
            options["env"] = _child_environment()
        initialise(*arguments, **options)

    def system(command):
        status = subprocess.call(command, shell=True)
        return status << 8 if status >= 0 else -status

    subprocess.Popen.__init__ = with_environment
    os.system = system


def _keep_process():
    """What acts on the whole process is refused: all windows are in it, and their threads."""
    def refuse(module, name, instead):
        def refused(*arguments, **options):
            raise PermissionError(f"{module.__name__}.{name}: an action runs inside of Tidewright; {instead}")

        setattr(module, name, functools.wraps(getattr(module, name))(refused))

    for name in ("fork", "forkpty", "execv", "execve"):
        refuse(os, name, "start children with subprocess")
    for name in ("_exit", "abort"):
        refuse(os, name, "raise an exception to end it")
    for name in ("alarm", "setitimer", "signal", "siginterrupt", "set_wakeup_fd", "pthread_kill", "raise_signal"):
        refuse(signal, name, "signals are Tidewright's")
    multiprocessing.set_start_method("spawn")


def _child_environment():
    """os.environ as if no other run had ever put its variables there; what scripts set themselves stays."""
    environment = dict(os.environ)
    if hasattr(_here, "run"):
        own = run_environment()
        for key, value in list(_entered.items()):
            if environment.get(key) == value:
                del environment[key]
                if key in own:
                    environment[key] = own[key]
    return environment


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


class _Run:
    """A script that was started, and the package whose modules are the files beside it.

    What the script imports from its folder is imported from that package. So each run has modules of its own, as the
    files are by then, whatever others name theirs, and finds them at any time, not only while its folder is on the
    search path.
    """

    _numbers = itertools.count(1)

    def __init__(self, folder, variables):
        self.folder = folder
        self.variables = variables
        package = types.ModuleType(f"{PACKAGE_PREFIX}{next(self._numbers)}")
        package.__path__ = [folder]
        self.package = package.__name__
        sys.modules[self.package] = package

    def forget(self):
        """Nothing of it is called any more."""
        for name in list(sys.modules):
            if name.partition(".")[0] == self.package:
                sys.modules.pop(name, None)


def _keep_modules_apart():
    """Has what stands in an action's own modules look into the action's folder first."""
    plain_import, plain_import_module = builtins.__import__, importlib.import_module

    @functools.wraps(plain_import)
    def import_(name, globals=None, locals=None, fromlist=(), level=0):
        package = _own_package(name, sys._getframe(1).f_globals if globals is None else globals) if level == 0 else None
        if package is None:
            return plain_import(name, globals, locals, fromlist, level)
        module = plain_import(f"{package}.{name}", globals, locals, fromlist, 0)
        return module if fromlist else sys.modules[f"{package}.{name.partition('.')[0]}"]

    @functools.wraps(plain_import_module)
    def import_module(name, package=None):
        own = _own_package(name, sys._getframe(1).f_globals)
        return plain_import_module(f"{own}.{name}" if own else name, package)

    builtins.__import__ = import_
    importlib.import_module = import_module


def _own_package(name, globals):
    """The package of the run whose code imports that, if its folder holds it; else None.

    Code that was made by exec stands in no package; it belongs to the run of its thread.
    """
    if not isinstance(name, str) or not isinstance(globals, dict):
        return None
    here = getattr(getattr(_here, "run", None), "package", None)
    package = globals.get("__package__", here)
    package = package.partition(".")[0] if isinstance(package, str) else ""
    top = name.partition(".")[0]
    if not top or top == __name__ or not package.startswith(PACKAGE_PREFIX) or package not in sys.modules:
        return None
    own = f"{package}.{top}"
    if own in sys.modules:
        return package
    spec = importlib.machinery.PathFinder.find_spec(own, sys.modules[package].__path__)
    # A folder without __init__.py counts when its name says that it is meant for the action.
    return package if spec is not None and (spec.has_location or top.startswith("__")) else None


def _drop_strays():
    """Forgets what other modules have imported for a script from its folder, under a name that others may use too."""
    def is_stray(name, module):
        spec = getattr(module, "__spec__", None)
        if "." in name or name == "main" or not isinstance(spec, importlib.machinery.ModuleSpec):
            return False
        places = [spec.origin] if spec.has_location else list(spec.submodule_search_locations or ())
        return any(os.path.dirname(place) in _folders or
                   os.path.basename(place) == "__init__.py" and os.path.dirname(os.path.dirname(place)) in _folders
                   for place in places)

    strays = {name for name, module in list(sys.modules.items()) if is_stray(name, module)}
    for name in list(sys.modules):
        if name.partition(".")[0] in strays:
            sys.modules.pop(name, None)


def _import_main(run):
    """The script, from its own folder whatever else the search path holds; "main" is another name for the latest."""
    name = run.package + ".main"
    spec = importlib.machinery.PathFinder.find_spec(name, [run.folder])
    if spec is None or spec.loader is None:
        raise ModuleNotFoundError("No module named 'main'", name="main")
    module = importlib.util.module_from_spec(spec)
    sys.modules.update({name: module, "main": module})
    try:
        spec.loader.exec_module(module)
    except BaseException:
        sys.modules.pop("main", None)
        raise
    return module


def begin(folder):
    """A script from that folder is about to be loaded."""
    _redirect()
    _search_path.add(folder)


def finish(folder):
    """It has ended; its callbacks may still be called."""
    _search_path.remove(folder)


_here = threading.local()  # its `run` is the one whose script this thread is in
_lock = threading.Lock()
_executing = 0  # how many runs and callbacks
_folders = set()  # of all scripts that were started
_entered = {}  # what was put into os.environ for runs, the latest values


def _enter(run, is_new):
    """Until _leave the script of that run executes. Its variables are put into os.environ; those of a callback only
    when this moves no other script to another cluster."""
    global _executing
    _here.run = run
    with _lock:
        _executing += 1
        if is_new or _executing == 1:
            _entered.update(run.variables)
            os.environ.update(run.variables)
    _drop_strays()


def _leave():
    global _executing
    with _lock:
        _executing -= 1


def run_environment():
    """The variables of the run that this thread is in, over what the application was started with."""
    return {**_base_environment, **_here.run.variables} if hasattr(_here, "run") else dict(os.environ)


def load(folder, variables):
    """Begins a run: sets the variables and imports the script of that folder.

    Returns the run, the module and None, or the run, None and why not. A run that has a module executes until `make`
    fails or `call` returns.
    """
    _folders.add(folder)
    run = _Run(folder, variables)
    try:
        _enter(run, True)
        sys.modules.pop("main", None)
        importlib.invalidate_caches()
        return run, _import_main(run), None
    except BaseException as error:
        problem = _description(error)
        run.forget()
        _leave()
        return run, None, problem
    finally:
        diagnostics.end_line()


def make(module):
    """Makes an instance of the script's class. Returns it and None, or None and why not."""
    try:
        return module.Action(), None
    except BaseException as error:
        problem = _description(error)
        _leave()
        return None, problem
    finally:
        diagnostics.end_line()


def call(instance, function, *arguments):
    """Calls a function of the instance. Returns what the application has to do about it:

    log lines, the name of a request or None, its state, its form's rows, and what else was raised or None.
    """
    request, state, rows, problem = None, {}, [], None
    try:
        try:
            getattr(instance, function)(*arguments)
        except BaseException as error:
            name = _class_name(error)
            if name in REQUESTS:
                request, state = _utf8(name), _state(instance)
                rows = _rows(instance) if name == "FormDialog" else []
            else:
                problem = _description(error)
        return _log_lines(instance), request, state, rows, problem
    finally:
        diagnostics.end_line()
        _leave()


def answer(instance, run, *arguments):
    """Calls the instance back with the user's answer, if it waits for one. Returns the same as call."""
    try:
        waits = getattr(instance, "_callback", None) is not None
    except BaseException as error:
        return [], None, {}, [], _description(error)
    if not waits:
        return [], None, {}, [], None
    try:
        _enter(run, False)
    except BaseException as error:
        _leave()
        return [], None, {}, [], _description(error)
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
