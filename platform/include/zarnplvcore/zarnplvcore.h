/* SPDX-License-Identifier: Apache-2.0 */
/* The container edition of the appliance. */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/** Does the system run as the container edition (docker=yes in /etc/zarnplv.conf)? @return 1 or 0 */
int ZARNIsDockerPLV(void);

#ifdef __cplusplus
}
#endif
