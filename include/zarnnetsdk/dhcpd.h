/* DHCP: the trial run of the client and the question whether an interface uses it. */
#pragma once

#include <zarnhacore/zarnhacore.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Asks the DHCP server of the network at an interface which address it would hand out; the interface is
 * left as it is. Blocks for as long as the client does.
 * @param info  szName names the interface; szIP and szMask are filled
 * @return 0; -1 with 0x0D00 (null record, empty name) or 0x2A00 (the client failed), or when the client
 *         left no address
 * Runs /usr/sbin/dhclient --zarn_test, and /bin/cp once for its script.
 */
int ZARNIGetDHCPTestNetInfo(ZARNNETIFADDR *info);

/**
 * Does the interface's file say BOOTPROTO=dhcp? A file without the key is repaired to BOOTPROTO=static.
 * Reads, and repairs, under the shared network lock.
 * @return 1 or 0; 0 also without a name (0x0D00) or a file, or when the lock is not had within 5 seconds
 */
int BlZARNLnxIsDHCP(const char *ifname);

#ifdef __cplusplus
}
#endif
