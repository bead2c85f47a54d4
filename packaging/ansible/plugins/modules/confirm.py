# SPDX-License-Identifier: Apache-2.0
"""Confirms a change, or gives it more time."""

DOCUMENTATION = r"""
module: confirm
short_description: Confirms a change that waits for it on an appliance
description:
  - A change that was made with a time to confirm goes back by itself unless it is confirmed.
  - M(zarnnet.appliance.state) with I(confirm) does this by itself. This module is for changes that
    somebody else made, or that a play checks by means of its own before it keeps them.
options:
  number:
    description:
      - The change that is meant; without it the one that waits.
    type: int
  extend:
    description:
      - Seconds more, in place of a confirmation.
    type: int
author: libzarnnetsdk maintainers
attributes:
  check_mode:
    support: none
  diff_mode:
    support: none
"""

EXAMPLES = r"""
- name: Keep the change that waits
  zarnnet.appliance.confirm:

- name: Give change 17 two minutes more
  zarnnet.appliance.confirm:
    number: 17
    extend: 120
"""

RETURN = r"""
report:
  description: The report of C(zarnnetctl confirm).
  returned: always
  type: dict
  sample: {"result": 0, "reason": "change 17 is confirmed", "number": 17}
state:
  description: What became of the change, C(kept), C(waiting) or C(reverted).
  returned: when I(number) is given
  type: str
  sample: kept
"""

from ansible.module_utils.basic import AnsibleModule
from ansible_collections.zarnnet.appliance.plugins.module_utils import zarnnetctl


NOT_FOUND = 7


def state_of(module):
    """What became of the change that is meant; None when none is named, or when nobody knows."""
    if module.params["number"] is None:
        return None
    history = zarnnetctl.run(module, ["history", str(module.params["number"])])
    return history.get("change", {}).get("state")


def main():
    module = AnsibleModule(argument_spec={"number": {"type": "int"}, "extend": {"type": "int"}})
    words = ["confirm"]
    if module.params["number"] is not None:
        words.append(str(module.params["number"]))
    if module.params["extend"] is not None:
        words += ["--extend", str(module.params["extend"])]
    report = zarnnetctl.run(module, words)
    state = state_of(module)
    if state == "kept" and report["result"] == NOT_FOUND:
        module.exit_json(changed=False, msg="it is confirmed already", report=report, state=state)
    if report["result"] != 0:
        prefix = "change %d is %s: " % (module.params["number"], state) if state else ""
        module.fail_json(msg=prefix + zarnnetctl.failure(report), report=report, state=state)
    module.exit_json(changed=True, msg=report["reason"], report=report, state=state)


if __name__ == "__main__":
    main()
