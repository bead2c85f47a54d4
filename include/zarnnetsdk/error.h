/* SPDX-License-Identifier: Apache-2.0 */
/* The codes of the error state: what each means, and its texts. */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/** Why a call failed. A code is set where the fault is found, on the calling thread; KOPACErrGet()
 * reads it, KOPACErrorGetFile() and KOPACErrorGetLine() say where it was set. A call that succeeds
 * leaves it as it is. */
typedef enum ZARNNETERROR {
  ZARNNETERR_NONE = 0x0000,       /* nothing has failed on this thread */
  ZARNNETERR_TABLE_FULL = 0x0100, /* a table of fixed size is full, or could not grow */
  ZARNNETERR_NO_MEMORY = 0x0200,  /* memory, or a former slave's file to write, was not to be had */
  ZARNNETERR_LOCK = 0x0400,       /* a lock was not to be had in time */
  ZARNNETERR_OPEN = 0x0900,       /* a file or socket could not be opened or created */
  ZARNNETERR_READ = 0x0A00,       /* reading failed before the end of a file */
  ZARNNETERR_WRITE = 0x0B00,      /* a file could not be written */
  ZARNNETERR_BAD_PARAMETER = 0x0D00,   /* an argument is missing, too long or outside its values */
  ZARNNETERR_HOSTNAME_LENGTH = 0x0E00, /* a host name that is empty or too long */
  ZARNNETERR_MALFORMED_ADDRESS = 0x1000,  /* not a well-formed IPv4 address or netmask */
  ZARNNETERR_RENAME = 0x2800,             /* a new file could not take the place of the old one */
  ZARNNETERR_COMMAND = 0x2A00,            /* a program, a service, a plugin or a send failed */
  ZARNNETERR_VLAN_QUERY = 0x3400,         /* the kernel's VLAN query failed */
  ZARNNETERR_UNEXPECTED_CONTENT = 0x4000, /* a file reads otherwise than it should */
  ZARNNETERR_REFUSED = 0x8100,            /* the system refused the request */
  ZARNNETERR_EXISTS = 0xBB00,             /* it exists already */
  ZARNNETERR_NOT_FOUND = 0xBC00,          /* no such interface, or it is of another kind */
  ZARNNETERR_SLAVES_FULL = 0xBD00         /* a bond has its most slaves already */
} ZARNNETERROR;

/**
 * The name of a code as it stands above, "ZARNNETERR_LOCK".
 * @param code  a ZARNNETERR_...
 * @return static text; null for any other number
 */
const char* ZARNNetErrorName(unsigned int code);

/**
 * What a code means, in words, "out of memory".
 * @param code  a ZARNNETERR_...
 * @return static text; null for any other number
 */
const char* ZARNNetErrorText(unsigned int code);

/** Sets the calling thread's error state back to ZARNNETERR_NONE, so that a code that is read later
 * is a later failure's. */
void ZARNNetErrorClear(void);

#ifdef __cplusplus
}
#endif
