"""Scales all deployments or stateful sets whose names match a pattern."""
import fnmatch

import tidewright_actions
from tidewright_actions import CheckBox, DropDown, TextField


class Action(tidewright_actions.Action):
    def run(self):
        self.ask_for("*", "The pattern may hold * and ?.")

    def ask_for(self, pattern, text):
        fields = {
            "pattern": TextField("Names", placeholder="web-*", initial=pattern),
            "replicas": TextField("Replicas", placeholder="1"),
            "kind": DropDown(["deployments", "statefulsets"], "Kind"),
            "show": CheckBox("Only show which ones"),
        }
        self.ask_form(text, fields, title="Scale by Pattern", ok="Continue", then=self.choose)

    def choose(self, values):
        if self.namespace == "All Namespaces":
            self.ask("Choose a namespace first.", title="Scale by Pattern")
        if not values["replicas"].isdecimal():
            self.ask_for(values["pattern"], "The number of replicas must be a whole number.")
        self.replicas = values["replicas"]
        names = self.kubectl("get", values["kind"], "-o", "name").split()
        self.chosen = [name for name in names if fnmatch.fnmatchcase(name.split("/")[1], values["pattern"])]
        if not self.chosen:
            self.ask(f"Nothing matches {values['pattern']}.", title="Scale by Pattern")
        lines = "\n".join(self.chosen)
        if values["show"]:
            self.ask(lines, title=f"{len(self.chosen)} match")
        self.ask(lines, title=f"Scale {len(self.chosen)} to {self.replicas}?", ok="Scale", cancel="Cancel",
                 then=self.scale)

    def scale(self, accepted):
        if accepted:
            self.log(self.kubectl("scale", *self.chosen, "--replicas=" + self.replicas).strip())
