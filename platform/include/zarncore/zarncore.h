/* SPDX-License-Identifier: Apache-2.0 */
/*
 * The core library of the appliance: settings files, locks, string lists and hashes, processes, the error state.
 *
 * An appliance with a core library of its own installs it in place of this one (soname libzarncore.so.1); what
 * stands here is what the networking library asks of it.
 *
 * Unless a function says otherwise: texts end with a NUL and must not be null, a failure is negative, sizes are in
 * bytes, and every function may be called from several threads at once, though not on the same list, hash, stream
 * or lock. No function throws, installs a signal handler or sets a timer.
 *
 * An operation that fails sets the error state, with its own source and line, to: 0x0900 where a file, a folder or a
 * pipe cannot be opened, 0x0A00 read, 0x0B00 written, 0x2800 renamed; 0x0400 for a lock not had or not held; 0x2A00
 * for a program that could not be started or has failed; 0x0200 for memory; 0x0D00 for an argument, a missing place
 * in a format and a buffer that is too small among them; 0x4000 for content that cannot be. What is absent (a key, a
 * line, an item) is no failure and sets nothing; nor does a question that is answered with 0.
 *
 * Files are rewritten whole and at once: a hidden temporary file beside them (".NAME.zarncore-new"), with their mode and
 * owner whatever the umask, is synced and renamed over them, and the folder is synced. A link stays, and the file
 * behind it is rewritten. Lines that an edit does not name stay as they are; an edit that changes nothing writes
 * nothing; one that fails leaves the file as it was. Once the new content is in the file's place the edit has
 * succeeded: a folder that cannot be synced after that is no failure. Temporary files that killed editors left go with
 * the next rewrite of their file. Two editors of one file, in whatever process, wait up to 30 seconds for each other,
 * on a lock of the system's own that no lock below is kept by. Text with a newline is refused where it would become
 * part of a line. A pipe is no file: it is neither read nor waited for.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

/** A growable list of strings. Callers read nItem; the rest is the library's. */
typedef struct KOPACSZLIST {
  int nItem;
  int nCapacity;
  char** rgszItem;
} KOPACSZLIST, *PKOPACSZLIST;

/** A map from strings to strings that lists its keys in the order they were first set. */
typedef struct KOPACSZHASH KOPACSZHASH, *PKOPACSZHASH;

/** A lock on one named file. */
typedef struct KOPACFILELOCK KOPACFILELOCK, *PKOPACFILELOCK;

/* ---- settings files: one KEY=value a line ----------------------------------------------------------
 * A key stands at the beginning of its line and is compared whole, with case. One pair of double quotes around
 * the whole value is taken off on reading. Of a key that stands twice the first line counts. */

/**
 * Reads a key into a buffer, cut to fit.
 * @param flags  0
 * @return the length of what is in the buffer; 0 for an absent key or an empty value (the buffer is emptied);
 *         negative when the file cannot be read
 */
int KOPACFileGetKeyValue(const char* szPath, const char* szKey, char* szBuf, size_t cbBuf,
                         int flags);

/**
 * Sets a key: its first line is replaced and further ones are removed, or one is appended. A missing file is made
 * with mode 0644.
 * @param szValue   may be empty
 * @param szFormat  the line: "%s" for the key, "%s" for the value, a newline at its end; nothing else in it is
 *                  taken for a conversion. Null means "%s=%s\n"
 * @return 0, or -1: nothing was written
 */
int KOPACFileSetKeyValue(const char* szPath, const char* szKey, const char* szValue,
                         const char* szFormat);

/** Has the key exactly this value? @param flags 0 @return 1 or 0, negative when the file cannot be read */
int KOPACFileCheckKeyValue(const char* szPath, const char* szKey, const char* szValue, int flags);

/** Removes a key's line. A text with "=" in it removes the lines that begin with it and end there or go on with
 * ",". @return 0, also when there is none; -1 for a missing file */
int KOPACFileRemoveKey(const char* szPath, const char* szKey);

/**
 * Sets and removes several keys in one rewrite. New keys are appended in the order in which the hash has them.
 * @param pSet     keys and their values; null sets none
 * @param pRemove  keys to remove, their values do not matter; null removes none. A key in both is set
 * @param szFormat as above, for every line
 * @return 0, or -1: nothing was written
 */
int KOPACFileSetKeys(const char* szPath, PKOPACSZHASH pSet, PKOPACSZHASH pRemove,
                     const char* szFormat);

/** Sets a key of /etc/zarninfo.conf, its value in quotes. @return 0 or -1 */
int KOPACINFOSetKeyValue(const char* szKey, const char* szValue);

/** Removes a key of /etc/zarninfo.conf. @return 0, also when there is none; -1 for a missing file */
int KOPACINFORemoveKey(const char* szKey);

/* ---- files of lines ---------------------------------------------------------------------------------- */

/**
 * Reads the first line that begins with a text (flags 2) or contains it (flags 0x402), without its newline.
 * @return its length, cut to the buffer; 0 when there is none (the buffer is emptied); negative when the file
 *         cannot be read
 */
int KOPACFileGetLine(const char* szPath, const char* szText, char* szBuf, size_t cbBuf, int flags);

/** Adds a line, and its newline, behind the first line that begins with szAfter; at the end when szAfter is null or
 * begins no line. Makes a missing file, with mode 0644. @param flags not used @return 0 or -1 */
int KOPACFileAddLine(const char* szPath, const char* szAfter, const char* szLine, int flags);

/** Appends every line of a file, without newlines, to *ppList. @return 0, or -1 */
int KOPACFileReadLines(const char* szPath, PKOPACSZLIST* ppList);

/** Replaces every occurrence of a text in a file. @param szOld not empty @param szNew may be empty @return 0 or -1 */
int KOPACFileReplaceSubStr(const char* szPath, const char* szOld, const char* szNew);

/** Makes and opens for writing a new file of mode 0600 whose name is the template with other characters for the
 * "XXXXXX" at its end. @return a stream, closed when a program is run; or null with errno */
FILE* KOPACFileTempFileOpen(char* szTemplate);

/** Makes an empty new file, mode 0600, beside a path and gives its name. @return 0, or -1: the name does not fit
 * or the file cannot be made */
int KOPACFileITmpName(const char* szPath, char* szBuf, size_t cbBuf);

/** Makes an empty file, mode 0644 whatever the umask, or gives the present one the present time. @return 0 or -1 */
int KOPACFileTouch(const char* szPath);

/** Is there anything of this path? @return 1 or 0 */
int KOPACFileExist(const char* szPath);

/** Is the path a folder? @return 1 or 0 */
int KOPACFileCheckDir(const char* szPath);

/** Appends the names in a folder, sorted, to *ppList; hidden ones (".NAME") are no entries.
 * @param szFilter only names that begin with it; null: all @param flags not used
 * @return their number; -1 when the folder cannot be read to its end */
int KOPACFileEnumDir(const char* szDir, const char* szFilter, PKOPACSZLIST* ppList, int flags);

/* ---- locks --------------------------------------------------------------------------------------------
 * Kept on files under /run/lock/zarncore/. A process that dies loses its locks; a program that is run and a child
 * that is forked hold none. */

/**
 * Takes a lock class for this thread.
 * @param classAndMode  the class (a multiple of 0x100) plus 5 to share it or 6 to have it alone
 * @param cWaitSeconds  how long to wait for other holders
 * @return 0, or negative when the time is up
 * A class that this thread holds is held once more and let go as often. Held shared and asked for alone, it is
 * held alone from then on until the outermost release; two threads that both do so wait for each other until their
 * time is up, and then still share it. A waiter sleeps until the holder lets go; the end of a holder that dies is
 * noticed within about 20 ms.
 */
int KOPACFileLock(int classAndMode, int cWaitSeconds);

/** Lets go of a class once. @param lockClass the class alone, without a mode
 * @return 0, negative when this thread does not hold it */
int KOPACFileUnlock(int lockClass);

/**
 * Takes the lock that belongs to a path; the file itself may be replaced meanwhile, or be missing.
 * @param mode     1 to have it alone, anything else to share it
 * @param cSeconds how long to wait for other holders; whoever holds it already is one, in this thread too
 * @param ppLock   receives the lock, for KOPACFileUnlockByFile(); left alone on failure
 * @return 0 or more, or negative when the time is up
 */
int KOPACFileLockTimeByFile(const char* szPath, int mode, int cSeconds, PKOPACFILELOCK* ppLock);

/** Lets go of a path's lock and frees it. @return 1; negative for null and in a forked child, which holds none */
int KOPACFileUnlockByFile(PKOPACFILELOCK pLock);

/* ---- lists and hashes: what is pushed and set is copied ------------------------------------------------ */

/** @param nCapacity room for this many texts, to begin with @return an empty list, or null */
PKOPACSZLIST KOPACSzListAlloc(int nCapacity);
/** Appends a copy of a text. The list may move: *ppList is its place from then on. @return 0 or -1 */
int KOPACSzListPush(PKOPACSZLIST* ppList, const char* sz);
/** @return the text at an index, the list's own until it changes; or null */
const char* KOPACSzListGet(const KOPACSZLIST* pList, int index);
/** @return the index of a text, or negative */
int KOPACSzListFind(const KOPACSZLIST* pList, const char* sz);
/** Empties a list; null is fine. */
void KOPACSzListRemoveAll(PKOPACSZLIST pList);
/** Frees the list and its texts; null is fine. */
void KOPACSzListFree(PKOPACSZLIST pList);

/** @param nCapacity not used, the hash grows @return an empty hash, or null */
PKOPACSZHASH KOPACSzHashAlloc(int nCapacity);
/** Sets a key, or changes it in its place. @return 0 or -1 */
int KOPACSzHashSetValue(PKOPACSZHASH* ppHash, const char* szKey, const char* szValue);
/** @return a key's value, the hash's own until it changes; or null */
const char* KOPACSzHashGetValue(const KOPACSZHASH* pHash, const char* szKey);
/** Appends the keys to *ppList. @return their number, or -1 */
int KOPACSzHashEnumKey(const KOPACSZHASH* pHash, PKOPACSZLIST* ppList);
/** Frees the hash; null is fine. */
void KOPACSzHashFree(PKOPACSZHASH pHash);

/* ---- text, in place -------------------------------------------------------------------------------------- */

/** As strtok_r. */
char* KOPACStrTok(char* sz, const char* szDelim, char** pszSave);
/** As strsep, with its place in *pszSave: a text starts anew, null goes on. Empty fields are kept. */
char* KOPACStrSep(char* sz, const char* szDelim, char** pszSave);
/** The token of this index, from 0; or null. */
char* KOPACStrTokIndex(char* sz, const char* szDelim, int index);
/** Takes white space off both ends. @param flags 0 @return sz */
char* KOPACStrTrimSpace(char* sz, int flags);
/** Is the line this key's ("KEY=...")? @return 1 or 0 */
int KOPACILineKeyMatch(const char* szLine, const char* szKey);

/* ---- processes ---------------------------------------------------------------------------------------------
 * A program is named by its absolute path and gets its arguments as they are: no shell, no search path. It starts
 * with the caller's environment (and a PATH, where the caller has none), working folder, default signals, and no
 * other descriptor than its input and output from and to /dev/null (KOPACPopen: its output to the stream). */

/** Runs a program with up to four arguments, ended by null, and waits; also right in a caller that ignores SIGCHLD
 * or reaps whatever ends. @return its exit status, 0x2A00 where that is not 0; -1 when it could not be started (errno)
 * or was ended by a signal */
int KOPACExec(const char* szPath, const char* szArg1, const char* szArg2, const char* szArg3,
              const char* szArg4);

/** The same with any number of arguments, ended by null.
 * @param options  187: an exit status above 0 is answered negative */
int KOPACExecl(const char* szPath, int options, ...);

/** The same with an argument vector, the program's name first. @param blWait 0: does not wait, and answers 0 */
int KOPACExecv(const char* szPath, const char* const argv[], int blWait);

/** Runs a program and reads its output. @param szMode "r"; the arguments end with null
 * @return a stream for KOPACPclose(), or null */
FILE* KOPACPopen(const char* szPath, const char* szMode, ...);

/** Closes the stream and waits. @return the exit status, which sets no error above 0 either; -1 for an end by a
 * signal, for a stream of another kind, and in a caller that ignores SIGCHLD or reaped the program: nobody has its
 * status then */
int KOPACPclose(FILE* fp);

/** How many programs of this name run? @param szBuf room for the library to work in, 256 bytes, with nothing in it for
 * the caller; must not be null @return their number, or -1 */
int KOPACPs(const char* szName, char* szBuf, size_t cbBuf);

/** @return the process id in a file, or -1 */
int KOPACReadPidFile(const char* szPath);

/** Runs a process whose arguments, joined by blanks, are this text, or begin with it up to the end of an argument?
 * @return 1 or 0; -1 for an empty text and when processes cannot be listed */
int KOPACIsProcAlive(const char* szCmdline);

/** Ends all such processes but the caller with SIGTERM. @param blWait 1 waits for their end, and after 3 seconds sends
 * SIGKILL @return 0, also when there was none; -1 for an empty text and when processes cannot be listed */
int KOPACKill(const char* szCmdline, int blWait);

/** The name of a process as the kernel has it, at most 15 characters. @return 0, or -1 when there is no such */
int KOPACProcGetByPid(int pid, char* szName, size_t cbName);

/* ---- the machine ------------------------------------------------------------------------------------------ */

/** Is a kernel module loaded (/sys/module)? @return 1 or 0, -1 for a name that can be none */
int KOPACModuleIsLoad(const char* szModule);

/** Has the appliance two controller heads (support_dual_head="yes" in /etc.defaults/zarninfo.conf)? @return 1 or 0 */
int KOPACSupportDualhead(void);

/**
 * Hides a text, or shows a hidden one: the operation is its own inverse, keeps the length, leaves no NUL, and makes
 * printable text of printable text. The key, /etc/zarncore/cipher.key (mode 0600), is made on first use; one that is
 * damaged is an error, and is not replaced.
 * @param pIn    text, up to a NUL or cbIn bytes
 * @param pOut   filled whole: the text, then zeros; must hold the text; may be pIn
 * @return 0, or -1: pOut is as it was
 */
int KOPACCryptBufCrypt(const char* pIn, size_t cbIn, char* pOut, size_t cbOut);

/* ---- the error state: the last code set in this thread, and the place that set it ---------------------------- */

/** Sets the state. @param szFile name of the source, copied (63 characters); null is empty */
void KOPACErrSetEx(unsigned short code, const char* szFile, int line);
/** @return the code, 0 before the first */
unsigned short KOPACErrGet(void);
/** @return the source's name, of this thread and until the next KOPACErrSetEx() */
const char* KOPACErrorGetFile(void);
/** @return the line, 0 before the first */
int KOPACErrorGetLine(void);

#ifdef __cplusplus
}
#endif
