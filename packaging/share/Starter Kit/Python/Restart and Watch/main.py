"""Restarts a deployment, and offers to wait for the end."""
import tidewright_actions


class Action(tidewright_actions.Action):
    def run(self):
        self.name = self.environment["DEPLOYMENT"]
        self.ask(f"All pods of {self.name} are replaced, a few at a time.", title=f"Restart {self.name}?",
                 ok="Restart", cancel="Cancel", then=self.restart)

    def restart(self, accepted):
        if accepted:
            try:
                self.log(self.kubectl("rollout", "restart", "deployment/" + self.name).strip())
            except tidewright_actions.KubectlError as error:
                self.ask(str(error), title=f"{self.name} was not restarted")
            self.ask("Shall I tell you when all pods are replaced?", title=f"{self.name} is restarting", ok="Tell Me",
                     cancel="No", then=self.watch)

    def watch(self, accepted):
        if accepted:
            try:
                state = self.kubectl("rollout", "status", "deployment/" + self.name, "--timeout=10m")
            except tidewright_actions.KubectlError as error:
                self.notify(self.name, f"The rollout has not ended: {error}", subtitle=self.context)
            self.notify(self.name, tidewright_actions.last_line(state) or "The rollout has ended.", subtitle=self.context)
