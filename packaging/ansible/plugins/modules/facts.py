# SPDX-License-Identifier: Apache-2.0
"""The state document of an appliance as facts."""

DOCUMENTATION = r"""
module: facts
short_description: Reads the networking of an appliance as a document
description:
  - Returns the state document, as C(zarnnetctl show --json) prints it, under
    C(ansible_facts.zarnnet).
  - It is what M(zarnnet.appliance.state) takes back. Passwords are never in it.
options:
  view:
    description:
      - What is configured in files, what is live in the kernel, or an object with both.
    type: str
    choices: [configured, live, both]
    default: configured
author: libzarnnetsdk maintainers
attributes:
  check_mode:
    support: full
  diff_mode:
    support: none
"""

EXAMPLES = r"""
- name: Read what is configured
  zarnnet.appliance.facts:

- name: Keep it in version control
  ansible.builtin.copy:
    content: "{{ ansible_facts.zarnnet | to_nice_json }}"
    dest: "appliances/{{ inventory_hostname }}.json"
    mode: "0644"
  delegate_to: localhost
"""

RETURN = r"""
ansible_facts:
  description: The document.
  returned: success
  type: dict
  contains:
    zarnnet:
      description: The state document; with I(view=both) its two views as C(configured) and C(live).
      type: dict
      sample: {"interfaces": {"eth0": {"mtu": 1500, "up": true}}}
"""

from ansible.module_utils.basic import AnsibleModule
from ansible_collections.zarnnet.appliance.plugins.module_utils import zarnnetctl


def main():
    module = AnsibleModule(
        argument_spec={
            "view": {"choices": ["configured", "live", "both"], "default": "configured"},
        },
        supports_check_mode=True,
    )
    state = zarnnetctl.run(module, ["show", "--view", module.params["view"]])
    if "result" in state:
        module.fail_json(msg=zarnnetctl.failure(state))
    module.exit_json(changed=False, ansible_facts={"zarnnet": state})


if __name__ == "__main__":
    main()
