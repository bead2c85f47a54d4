#pragma once

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct KOPACSZLIST { int nItem; int nCapacity; char **rgszItem; } KOPACSZLIST, *PKOPACSZLIST;
typedef struct KOPACSZHASH KOPACSZHASH, *PKOPACSZHASH;
typedef struct KOPACFILELOCK KOPACFILELOCK, *PKOPACFILELOCK;

/* key/value and line files */
int KOPACFileGetKeyValue(const char *szPath, const char *szKey, char *szBuf, size_t cbBuf, int flags);
int KOPACFileSetKeyValue(const char *szPath, const char *szKey, const char *szValue, const char *szFormat);
int KOPACFileCheckKeyValue(const char *szPath, const char *szKey, const char *szValue, int flags);
int KOPACFileRemoveKey(const char *szPath, const char *szKey);
int KOPACFileSetKeys(const char *szPath, PKOPACSZHASH pSet, PKOPACSZHASH pRemove, const char *szFormat);
int KOPACINFOSetKeyValue(const char *szKey, const char *szValue);
int KOPACINFORemoveKey(const char *szKey);
int KOPACFileGetLine(const char *szPath, const char *szText, char *szBuf, size_t cbBuf, int flags);
int KOPACFileAddLine(const char *szPath, const char *szAfter, const char *szLine, int flags);
int KOPACFileReadLines(const char *szPath, PKOPACSZLIST *ppList);
int KOPACFileReplaceSubStr(const char *szPath, const char *szOld, const char *szNew);
FILE *KOPACFileTempFileOpen(char *szTemplate);
int KOPACFileITmpName(const char *szPath, char *szBuf, size_t cbBuf);
int KOPACFileTouch(const char *szPath);
int KOPACFileExist(const char *szPath);
int KOPACFileCheckDir(const char *szPath);
int KOPACFileEnumDir(const char *szDir, const char *szFilter, PKOPACSZLIST *ppList, int flags);

/* locks */
int KOPACFileLock(int classAndMode, int cWaitSeconds);
int KOPACFileUnlock(int lockClass);
int KOPACFileLockTimeByFile(const char *szPath, int mode, int cSeconds, PKOPACFILELOCK *ppLock);
int KOPACFileUnlockByFile(PKOPACFILELOCK pLock);

/* string lists and hashes */
PKOPACSZLIST KOPACSzListAlloc(int nCapacity);
int KOPACSzListPush(PKOPACSZLIST *ppList, const char *sz);
const char *KOPACSzListGet(const KOPACSZLIST *pList, int index);
int KOPACSzListFind(const KOPACSZLIST *pList, const char *sz);
void KOPACSzListRemoveAll(PKOPACSZLIST pList);
void KOPACSzListFree(PKOPACSZLIST pList);
PKOPACSZHASH KOPACSzHashAlloc(int nCapacity);
int KOPACSzHashSetValue(PKOPACSZHASH *ppHash, const char *szKey, const char *szValue);
const char *KOPACSzHashGetValue(const KOPACSZHASH *pHash, const char *szKey);
int KOPACSzHashEnumKey(const KOPACSZHASH *pHash, PKOPACSZLIST *ppList);
void KOPACSzHashFree(PKOPACSZHASH pHash);

/* strings */
char *KOPACStrTok(char *sz, const char *szDelim, char **pszSave);
char *KOPACStrSep(char *sz, const char *szDelim, char **pszSave);
char *KOPACStrTokIndex(char *sz, const char *szDelim, int index);
char *KOPACStrTrimSpace(char *sz, int flags);

/* processes */
int KOPACExec(const char *szPath, const char *szArg1, const char *szArg2, const char *szArg3, const char *szArg4);
int KOPACExecl(const char *szPath, int options, ...);
int KOPACExecv(const char *szPath, const char *const argv[], int blWait);
FILE *KOPACPopen(const char *szPath, const char *szMode, ...);
int KOPACPclose(FILE *fp);
int KOPACPs(const char *szName, char *szBuf, size_t cbBuf);
int KOPACReadPidFile(const char *szPath);
int KOPACIsProcAlive(const char *szCmdline);
int KOPACKill(const char *szCmdline, int blWait);
int KOPACProcGetByPid(int pid, char *szName, size_t cbName);
int KOPACModuleIsLoad(const char *szModule);
int KOPACILineKeyMatch(const char *szLine, const char *szKey);
int KOPACSupportDualhead(void);
int KOPACCryptBufCrypt(const char *pIn, size_t cbIn, char *pOut, size_t cbOut);

/* error state */
void KOPACErrSetEx(unsigned short code, const char *szFile, int line);
unsigned short KOPACErrGet(void);
const char *KOPACErrorGetFile(void);
int KOPACErrorGetLine(void);

#ifdef __cplusplus
}
#endif
