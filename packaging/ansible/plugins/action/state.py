# SPDX-License-Identifier: Apache-2.0
"""The control host's part of a change that is to be confirmed.

The module runs detached from the session, which the change may cut. From then on every connection
is a new one, and the change is confirmed over one that was opened after it was in effect. Whatever
fails on the way, nothing is confirmed, and the appliance puts everything back by itself.
"""
import os
import time

from ansible.errors import AnsibleActionFail, AnsibleError
from ansible.plugins.action import ActionBase
from ansible.plugins.connection import ConnectionBase

MODULE = "zarnnet.appliance.state"
CONFIRM = "zarnnet.appliance.confirm"
STATUS = "ansible.legacy.async_status"

SETTINGS_SECONDS = 150  # what the appliance's own time to confirm may come to
GRACE = 10  # seconds that the steps of a change may take after the last word from the appliance
LONGEST = 900  # of the job on the appliance
CONNECT_SECONDS = 3
PAUSE_SECONDS = 0.5
DELAY = 1  # the module's own default


class ActionModule(ActionBase):
    TRANSFERS_FILES = False

    def run(self, tmp=None, task_vars=None):
        self._supports_check_mode = True
        self._supports_async = False
        result = super().run(tmp, task_vars)
        if result.get("skipped"):
            return result
        if self._task.args.get("confirm") is None or self._task.check_mode:
            result.update(self._execute_module(module_name=MODULE, task_vars=task_vars))
            return result
        self._vars = task_vars
        self._home = self._play_context.remote_addr
        self._boundConnections()
        result.update(self._confirmedChange())
        return result

    # ---- the change

    def _confirmedChange(self):
        seconds = self._seconds("confirm", 0) or SETTINGS_SECONDS
        delay = self._seconds("delay", DELAY)
        address = self._task.args.get("address") or self._home
        started = self._start()
        if "ansible_job_id" not in started:
            return started
        folder = os.path.dirname(started["results_file"])
        job = {"jid": started["ansible_job_id"], "_async_dir": folder}
        # A connection of before the first step would be cut, which takes seconds to be noticed.
        time.sleep(delay + 1)
        change = self._await(job, address, seconds)
        if change is None:
            return {
                "failed": True,
                "msg": "the appliance was not reached at %s within %d seconds: the change is not "
                       "confirmed, and goes back by itself" % (address, seconds),
            }
        if not change.get("failed") and "confirm" in change["report"]:
            change = self._confirmed(change, address, seconds)
        self._ask(STATUS, dict(job, mode="cleanup"))
        return change

    # The change with what came of its confirmation.
    def _confirmed(self, change, address, seconds):
        answer = self._confirm(address, change["number"], seconds)
        if answer is None:
            reason = ("the appliance was not reached any more at %s: change %d goes back by itself "
                      "unless the confirmation came through" % (address, change["number"]))
            return dict(change, failed=True, msg=reason)
        if answer.get("failed"):
            changed = answer.get("state") != "reverted"
            return dict(change, failed=True, msg=answer["msg"], changed=changed)
        return dict(change, address=address)

    def _seconds(self, option, default):
        text = str(self._task.args.get(option, default))
        if not text.isdecimal():
            raise AnsibleActionFail("%s: a number of seconds belongs here" % option)
        return int(text)

    def _start(self):
        self._task.async_val = LONGEST
        try:
            return self._execute_module(module_name=MODULE, task_vars=self._vars, wrap_async=True)
        finally:
            self._task.async_val = 0

    # What came of the job, heard at the new address; at the old one only that there was no change.
    def _await(self, job, address, seconds):
        end = time.monotonic() + seconds + GRACE
        while time.monotonic() < end:
            for place in dict.fromkeys([address, self._home]):
                answer = self._at(place, STATUS, job) or {}
                # Another machine that has the address knows no such job, and says both.
                started, finished = answer.get("started"), answer.get("finished")
                if started and not finished:
                    end = time.monotonic() + seconds + GRACE
                elif finished and not started and (place == address or answer.get("failed")):
                    answer.pop("finished")
                    answer.pop("ansible_job_id", None)
                    return answer
            time.sleep(PAUSE_SECONDS)
        return None

    # Confirming twice does no harm: an answer that is lost is asked for again.
    def _confirm(self, address, number, seconds):
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            answer = self._at(address, CONFIRM, {"number": number})
            if answer is not None:
                return answer
            time.sleep(PAUSE_SECONDS)
        return None

    # ---- connections

    # A connection whose other end is gone says so within seconds, and not when the kernel gives up.
    def _boundConnections(self):
        if self._connection.transport == "ssh":
            alive = "-o ServerAliveInterval=%d -o ServerAliveCountMax=2" % CONNECT_SECONDS
            self._connection.set_option("ssh_extra_args", " ".join(
                filter(None, [self._connection.get_option("ssh_extra_args"), alive])))
            self._connection.set_option("timeout", CONNECT_SECONDS)
        self._reset()

    # A module's answer over a connection of its own; None when the appliance does not answer there.
    def _at(self, address, module, arguments):
        for option in ("host", "remote_addr"):
            if option in self._connection.get_options():
                self._connection.set_option(option, address)
        self._play_context.remote_addr = address
        self._reset()
        return self._ask(module, arguments)

    # One that has no such thing is none that could be cut.
    def _reset(self):
        if type(self._connection).reset is not ConnectionBase.reset:
            self._connection.reset()

    def _ask(self, module, arguments):
        try:
            return self._execute_module(module, arguments, task_vars=self._vars)
        except AnsibleError:
            self._connection._shell.tmpdir = None  # nobody can remove it
            return None
