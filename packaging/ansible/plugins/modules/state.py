# SPDX-License-Identifier: Apache-2.0
"""Makes an appliance's networking as a document says."""

DOCUMENTATION = r"""
module: state
short_description: Makes the networking of an appliance as a document says
description:
  - Applies a part of the state document as C(zarnnetctl apply) does. What is named is wanted, what
    is not named stays, C(null) removes.
  - The change is checked first, compared with the appliance afterwards, and put back whole when it
    failed or is not in effect.
  - Check mode plans the change in a private copy of the appliance and changes nothing; diff mode
    shows each field, and the files.
  - Needs root on the appliance.
options:
  document:
    description:
      - The document as a mapping, or as its text in JSON or YAML.
      - Text is handed on as it is, so that C(no) and C(08:00) are what zarnnetctl takes them for.
        Numbers that come from templates are texts in a mapping; take C(lookup('template', ...))
        then.
      - Passwords in it are neither logged nor returned.
    type: raw
    required: true
  confirm:
    description:
      - Seconds within which the control host has to reach the appliance over a new connection. Only
        then is the change confirmed; otherwise everything goes back by itself. 0 takes the time of
        the appliance's settings.
      - Without it the change stays at once, and one that takes away the path of the session is
        refused.
    type: int
  address:
    description:
      - Where the control host reaches the appliance after the change; without it, where it does
        now. Needs I(confirm).
      - The following tasks of the play still use the old address until C(ansible_host) is set.
    type: str
  delay:
    description:
      - Seconds between the answer to the control host and the first step of a change with
        I(confirm).
    type: int
    default: 1
  force:
    description:
      - Do what a rule refuses and that can be insisted on.
    type: bool
    default: false
  keep:
    description:
      - Keep what is stored, though it is not in effect, for a driver or a partner that is yet to
        come.
    type: bool
    default: false
  wait:
    description:
      - Seconds to wait for another's change to end.
    type: int
    default: 5
author: libzarnnetsdk maintainers
attributes:
  check_mode:
    support: full
  diff_mode:
    support: full
notes:
  - The document goes to zarnnetctl on its standard input, and no shell is involved.
  - A new address is a host without a known key. With C(HostKeyAlias={{ inventory_hostname }}) in
    C(ansible_ssh_common_args) the key belongs to the appliance and not to its address.
"""

EXAMPLES = r"""
- name: Name servers and the gateway
  zarnnet.appliance.state:
    document:
      dns: {servers: [192.168.50.1]}
      routes: {gateway: 192.168.50.1}

- name: The document of this appliance, from version control
  zarnnet.appliance.state:
    document: "{{ lookup('file', 'appliances/' + inventory_hostname + '.yaml') }}"
    confirm: 60

- name: Another address for the interface that this session comes over
  zarnnet.appliance.state:
    document:
      interfaces: {eth0: {ipv4: {address: 192.168.50.20, prefix: 24}}}
    confirm: 60
    address: 192.168.50.20

- name: Go on there
  ansible.builtin.set_fact:
    ansible_host: 192.168.50.20
"""

RETURN = r"""
number:
  description: The number of the change; C(zarnnetctl undo NUMBER) goes back to before it.
  returned: when something was changed, or refused
  type: int
  sample: 17
report:
  description: The report of zarnnetctl; in check mode the plan.
  returned: always
  type: dict
  sample: {"result": 0, "reason": "done", "number": 17, "steps": [{"what": "bring up eth0"}]}
address:
  description: Where the control host reached the appliance when it confirmed the change.
  returned: when the change was confirmed
  type: str
  sample: 192.168.50.20
"""

import json
import re
import time

from ansible.module_utils.basic import AnsibleModule
from ansible_collections.zarnnet.appliance.plugins.module_utils import zarnnetctl

SECRET = "password"


def secrets_in(document):
    """The values that nothing returned may show."""
    if isinstance(document, dict):
        own = {str(value) for key, value in document.items() if key == SECRET and value}
        return own.union(*[secrets_in(value) for key, value in document.items() if key != SECRET])
    if isinstance(document, list):
        return set().union(*map(secrets_in, document))
    if isinstance(document, str):
        found = re.findall(SECRET + r"""["']?\s*:\s*(?:"([^"]+)"|'([^']+)'|([^\s,}]+))""", document)
        return {value for values in found for value in values if value}
    return set()


def text_of(module):
    document = module.params["document"]
    if isinstance(document, str):
        # Returned among the arguments, it would show secrets in whatever way they are written.
        module.no_log_values = secrets_in(document) | {document.strip(), document}
        return document
    module.no_log_values = secrets_in(document)
    if not isinstance(document, dict):
        module.fail_json(msg="document: a mapping belongs here, or its text")
    return json.dumps(document)


def options_of(params):
    words = ["--wait", str(params["wait"])]
    words += ["--force"] if params["force"] else []
    words += ["--keep"] if params["keep"] else []
    words += [] if params["confirm"] is None else ["--confirm", str(params["confirm"])]
    return words


def sides(differences):
    """Each field that differs, as it is and as it would be."""
    def line(row, value):
        return "%s: %s\n" % (row["path"], json.dumps(value, sort_keys=True))

    def found(row):
        files, kernel = row.get("files"), row.get("kernel")
        if "files" in row and "kernel" in row and files != kernel:
            return {"files": files, "kernel": kernel}
        return files if "files" in row else kernel

    return {
        "before_header": "state",
        "after_header": "document",
        "before": "".join(line(row, found(row)) for row in differences),
        "after": "".join(line(row, row["wanted"]) for row in differences),
    }


def differences_of(module, text):
    report = zarnnetctl.run(module, ["diff", "-"], text)
    return report.get("diff", report).get("differences", [])


def file_diffs(files):
    return [{"prepared": row["diff"]} for row in files if row.get("diff")]


def changed_files(module, report):
    if "number" not in report:
        return []
    history = zarnnetctl.run(module, ["history", str(report["number"])])
    return history.get("change", {}).get("files", [])


def planned(module, text):
    report = zarnnetctl.run(module, ["plan", "-"] + options_of(module.params), text)
    report.pop("inputs", None)
    return report, report.get("files", [])


def applied(module, text):
    if module.params["confirm"] is not None:
        time.sleep(module.params["delay"])
    report = zarnnetctl.run(module, ["apply", "-"] + options_of(module.params), text)
    return report, changed_files(module, report) if module._diff else []


def main():
    module = AnsibleModule(
        argument_spec={
            "document": {"type": "raw", "required": True, "no_log": True},
            "confirm": {"type": "int"},
            "address": {"type": "str"},
            "delay": {"type": "int", "default": 1},
            "force": {"type": "bool", "default": False},
            "keep": {"type": "bool", "default": False},
            "wait": {"type": "int", "default": 5},
        },
        required_by={"address": "confirm"},
        supports_check_mode=True,
    )
    text = text_of(module)
    diff = [sides(differences_of(module, text))] if module._diff else []
    report, files = (planned if module.check_mode else applied)(module, text)
    steps = [step["what"] for step in report.get("steps", [])]
    result = {"report": report, "diff": diff + file_diffs(files)}
    if "number" in report:
        result["number"] = report["number"]
    if report["result"] != 0:
        stays = report.get("restored") is False  # what could not be put back has changed
        module.fail_json(msg=zarnnetctl.failure(report), changed=stays, **result)
    zarnnetctl.warn(module, report)
    outcome = "would " + "; ".join(steps) if module.check_mode and steps else report["reason"]
    module.exit_json(changed=bool(steps), msg=outcome, **result)


if __name__ == "__main__":
    main()
