"""Waits until a deployment's rollout has ended, and says so."""
import tidewright_actions


class Action(tidewright_actions.Action):
    def run(self):
        name = self.environment["DEPLOYMENT"]
        try:
            state = self.kubectl("rollout", "status", "deployment/" + name, "--timeout=10m")
        except tidewright_actions.KubectlError as error:
            self.notify(name, f"The rollout has not ended: {error}", subtitle=self.context)
        self.notify(name, tidewright_actions.last_line(state) or "The rollout has ended.", subtitle=self.context)
