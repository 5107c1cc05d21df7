"""Restarts a deployment, and offers to wait for the end."""
import tidewright_actions


class Action(tidewright_actions.Action):
    def run(self):
        self.name = self.environment["DEPLOYMENT"]
        if self.namespace == "All Namespaces":
            self.ask(f"Choose the namespace of {self.name} first.", title="Restart and Watch")
        self.ask(f"All pods of {self.name} are replaced, a few at a time.", title=f"Restart {self.name}?",
                 ok="Restart", cancel="Cancel", then=self.restart)

    def restart(self, accepted):
        if accepted:
            self.log(self.kubectl("rollout", "restart", "deployment/" + self.name).strip())
            self.ask("Shall I tell you when all pods are replaced?", title=f"{self.name} is restarting", ok="Tell Me",
                     cancel="No", then=self.watch)

    def watch(self, accepted):
        if accepted:
            state = self.kubectl("rollout", "status", "deployment/" + self.name, "--timeout=10m")
            self.notify(self.name, state.strip().splitlines()[-1], subtitle=self.context)
