"""Scales all deployments or stateful sets whose names match a pattern."""
import fnmatch

import tidewright_actions
from tidewright_actions import CheckBox, DropDown, KubectlError, TextField

TITLE = "Scale by Pattern"


class Action(tidewright_actions.Action):
    def run(self):
        if self.namespace == tidewright_actions.ALL_NAMESPACES:
            self.ask("Choose a namespace first.", title=TITLE)
        self.ask_for("The pattern may hold * and ?.", {"pattern": "*", "replicas": "", "kind": None, "show": False})

    def ask_for(self, text, values):
        """The form, filled in with these values."""
        fields = {
            "pattern": TextField("Names", placeholder="a pattern such as web-*", initial=values["pattern"]),
            "replicas": TextField("Replicas", placeholder="how many of each", initial=values["replicas"]),
            "kind": DropDown(["deployments", "statefulsets"], "Kind", initial=values["kind"]),
            "show": CheckBox("Only show which ones", checked=values["show"]),
        }
        self.ask_form(text, fields, title=TITLE, ok="Continue", then=self.choose)

    def choose(self, values):
        replicas = values["replicas"].strip()
        if not values["show"] and not (replicas.isascii() and replicas.isdecimal()):
            self.ask_for("The number of replicas must be a whole number, such as 3.", values)
        try:
            names = self.kubectl("get", values["kind"], "-o", "name").splitlines()
        except KubectlError as error:
            self.ask_for(str(error), values)
        names = [name for name in names if name.startswith(values["kind"][:-1])]  # nothing that reads as an option
        chosen = [name for name in names if fnmatch.fnmatchcase(name.split("/")[1], values["pattern"].strip())]
        if not chosen:
            self.ask_for(f"No name of the {values['kind']} here matches \"{values['pattern']}\".", values)
        lines = "\n".join(chosen)
        if values["show"]:
            self.ask(lines, title=f"{len(chosen)} match")
        self.values, self.chosen, self.replicas = values, chosen, replicas
        self.ask(lines, title=f"Scale {len(chosen)} to {replicas}?", ok="Scale", cancel="Cancel", then=self.scale)

    def scale(self, accepted):
        if not accepted:
            return
        try:
            self.log(self.kubectl("scale", *self.chosen, "--replicas=" + self.replicas).strip())
        except KubectlError as error:
            self.ask_for(str(error), self.values)
