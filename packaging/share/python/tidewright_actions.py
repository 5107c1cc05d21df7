# SPDX-License-Identifier: GPL-3.0-or-later
"""What a Python action of Tidewright is written with.

An action is a class named Action, derived from the one here, with a method run:

    import tidewright_actions

    class Action(tidewright_actions.Action):
        def run(self):
            pods = self.kubectl("get", "po", "-o", "name").split()
            self.ask(f"There are {len(pods)} pods.", title="Pods")

self.ask, self.ask_form and self.notify end the method that calls them: the window takes over, and the method named
by `then` goes on with the answer. Ends of methods are the only places to ask at; whatever follows is not reached.

Where a method is given as `then`, it may ask again, so that questions can follow one another.
"""
import os
import re
import shlex
import subprocess

import tidewright_host

__all__ = ["ALL_NAMESPACES", "Action", "CheckBox", "DropDown", "FormDialog", "KubectlError", "Notification",
           "OKCancelDialog", "OKDialog", "TextField", "last_line"]

ALL_NAMESPACES = "All Namespaces"  # what Action.namespace is while the window shows all


def last_line(text):
    """The last line of what a command printed that is not blank; empty when there is none."""
    return next((line.strip() for line in reversed(text.splitlines()) if line.strip()), "")


# No Exceptions: an author's `except Exception` around a question means what can fail, not the question.
class OKDialog(BaseException):
    """Raised by Action.ask without a second button."""


class OKCancelDialog(BaseException):
    """Raised by Action.ask with a second button."""


class Notification(BaseException):
    """Raised by Action.notify."""


class FormDialog(BaseException):
    """Raised by Action.ask_form."""


class KubectlError(Exception):
    """kubectl failed; the text is what it wrote to its standard error, or why it was not run."""


# Short options may stand together, where those before the last take no value.
_NAMES_NAMESPACE = re.compile(r"-[hiqtwR]*[nA]|--(namespace|all-namespaces)(=|$)")
_NAMES_CLUSTER = re.compile(r"--(context|kubeconfig)(=|$)")
_READS_ALL_NAMESPACES = frozenset(("describe", "get", "top"))
_NEEDS_NO_NAMESPACE = frozenset((
    "api-resources", "api-versions", "auth", "certificate", "cluster-info", "completion", "config", "cordon", "drain",
    "explain", "help", "kustomize", "options", "plugin", "taint", "uncordon", "version"))


def _place(options, context, namespace):
    """What to add to these options of kubectl for the cluster and the namespace. Those that they name stay."""
    place = [] if any(map(_NAMES_CLUSTER.match, options)) else ["--context=" + context]
    words = [option for option in options if not re.match("-.*=", option)]
    verb = words[0] if words else ""
    # `config` takes --namespace for what is to be written.
    if verb == "config" or any(map(_NAMES_NAMESPACE.match, options)):
        return place
    if namespace != ALL_NAMESPACES:
        return place + ["-n", namespace]
    if verb == "top" and words[1:2] in (["no"], ["node"], ["nodes"]):
        return place
    if verb in _READS_ALL_NAMESPACES:
        return place + ["--all-namespaces"]
    if verb in _NEEDS_NO_NAMESPACE and words[:2] != ["auth", "reconcile"]:
        return place
    raise KubectlError(f"choose a namespace first: the window shows all, and \"kubectl {verb}\" needs one (or name it, "
                       "with -n)")


class TextField:
    """One line of text. Its value in the answer is a str."""

    field_type = "textfield"

    def __init__(self, label=None, placeholder=None, initial=None):
        self.label = label
        self.placeholder = placeholder
        self.initial = initial


class DropDown:
    """A list to choose one of. Its value in the answer is the chosen str."""

    field_type = "dropdown"

    def __init__(self, choices, label=None, initial=None):
        self.label = label
        self.choices = [str(choice) for choice in choices]
        self.initial = initial


class CheckBox:
    """A box to check. Its value in the answer is a bool."""

    field_type = "checkbox"

    def __init__(self, label=None, checked=False):
        self.label = label
        self.checked = checked


class _Form:
    def __init__(self, fields):
        self.fields = dict(fields)


class _Logger:
    def __init__(self):
        self.log = []


class Action:
    """The base of every action.

    environment  the variables the action was started with: CONTEXT, NAMESPACE, KUBECONFIG, KUBECTL, one for the
                 chosen resource (POD, DEPLOYMENT ...), and those that config.json lists
    context      the window's context
    namespace    that of the chosen resource; in the scope "namespace" the window's, "All Namespaces" when it shows all
    """

    def __new__(cls, *arguments, **options):
        # Not in __init__, which an action may replace without calling this one.
        action = super().__new__(cls)
        action.environment = tidewright_host.run_environment()
        action.form = None
        action._state = {}
        action._callback = None
        action._logger = _Logger()
        return action

    @property
    def context(self):
        return self.environment.get("CONTEXT", "")

    @property
    def namespace(self):
        return self.environment.get("NAMESPACE", "")

    def run(self):
        """What the action does. To be written by the author."""
        raise NotImplementedError("this action has no run method")

    def ask(self, text, *, title=None, ok=None, cancel=None, then=None):
        """Shows a dialog, with a second button when `cancel` names one. then(accepted) gets a bool."""
        self._request({"dialog_text": text, "title": title, "ok_button_text": ok, "cancel_button_text": cancel}, then)
        raise OKCancelDialog if cancel else OKDialog

    def ask_form(self, text, fields, *, title=None, ok=None, cancel="Cancel", then=None):
        """Shows a form: `fields` maps names to TextField, DropDown or CheckBox objects, in the order of the rows.

        then(values) gets a dict of field name to value. It is not called when the user cancels.
        """
        self.form = _Form(fields)
        self._request({"dialog_text": text, "title": title, "ok_button_text": ok, "cancel_button_text": cancel}, then)
        raise FormDialog

    def notify(self, title, text=None, *, subtitle=None, then=None):
        """Shows a notification. then() is called at once, not when the user has seen it."""
        self._request({"title": title, "subtitle": subtitle, "informative_text": text}, then)
        raise Notification

    def log(self, line):
        """Adds a line to the console, when the method that is running now has ended."""
        self._logger.log.append(str(line))

    def kubectl(self, *arguments, input=None, timeout=None):
        """Runs the packaged kubectl in the window's cluster and namespace, logs it, and returns its output.

        The arguments' own -n, -A, --context and --kubeconfig come before the window's. While the window shows all
        namespaces, get, describe and top read all, and other commands have to name one. Warnings of kubectl are logged.

        Raises KubectlError when it fails. `input` is a text for its standard input, `timeout` is in seconds.
        """
        command = [str(argument) for argument in arguments]
        end = command.index("--") if "--" in command else len(command)  # what follows is for another program
        command[end:end] = _place(command[:end], self.context, self.namespace)
        self.log(shlex.join(["kubectl", *command]))
        kubectl = self.environment["KUBECTL"]
        guard = os.path.join(os.path.dirname(kubectl), "child-guard")  # ends it together with Tidewright
        if os.access(guard, os.X_OK):
            command = [guard, str(os.getpid()), "0", "1024", kubectl, *command]
        else:
            command = [kubectl, *command]
        try:
            run = subprocess.run(command, env=self.environment, input=input or "", capture_output=True,
                                 encoding="utf-8", errors="replace", timeout=timeout)
        except subprocess.TimeoutExpired:
            raise KubectlError(f"kubectl took longer than {timeout} seconds") from None
        if run.returncode != 0:
            raise KubectlError(run.stderr.strip() or f"kubectl ended with status {run.returncode}")
        if run.stderr.strip():
            self.log(run.stderr.strip())
        return run.stdout

    def _request(self, state, then):
        self._state = {key: str(text) for key, text in state.items() if text is not None}
        self._callback = then

    def _run_callback(self, *arguments):
        # The lines of the call before have been shown; the application leaves them here.
        self._logger.log.clear()
        callback, self._callback = self._callback, None
        callback(*arguments)
