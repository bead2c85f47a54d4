/* SPDX-License-Identifier: Apache-2.0 */
/* What the networking library asks of an appliance's platform libraries, tried from outside: it knows the contracts'
 * headers and nothing of who keeps them. To be run as root in a root of its own, since it writes to /etc, /usr/zarn and
 * /var; scripts/conform does. One line a check, and the counts. */
#define _POSIX_C_SOURCE 200809L
#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <zarncore/zarncore.h>
#include <zarnhacore/zarnhacore.h>
#include <zarnplvcore/zarnplvcore.h>
#include <zarnsdk/zarnsdk.h>

enum { kShared = 5, kAlone = 6, kNetworkLock = 0x100 };

static const char* pszWhat; /* the check under way */
static int blFine, cPassed, cFailed;

static void expect_at(int blHolds, const char* szText, int line) {
  if (blHolds) return;
  blFine = 0;
  printf("        conform.c:%d: not so: %s\n", line, szText);
}
#define EXPECT(condition) expect_at((condition) != 0, #condition, __LINE__)
/* A failure, and the code that it leaves. */
#define FAILS(call, code)                   \
  do {                                      \
    KOPACErrSetEx(0x7777, "conform.c", 1);  \
    EXPECT((call) < 0);                     \
    EXPECT(KOPACErrGet() == (code));        \
  } while (0)

static void put(const char* szPath, const char* szText, mode_t mode) {
  FILE* fp;
  unlink(szPath);
  fp = fopen(szPath, "w");
  if (!fp || fputs(szText, fp) < 0 || fclose(fp) != 0 || chmod(szPath, mode) != 0) {
    perror(szPath);
    exit(2);
  }
}

static const char* content(const char* szPath) {
  static char szBuf[8192];
  FILE* fp = fopen(szPath, "r");
  size_t cRead = 0;
  if (fp) {
    cRead = fread(szBuf, 1, sizeof szBuf - 1, fp);
    fclose(fp);
  }
  szBuf[cRead] = '\0';
  return szBuf;
}

static int is(const char* szPath, const char* szText) { return strcmp(content(szPath), szText) == 0; }

static double now(void) {
  struct timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return (double)time.tv_sec + (double)time.tv_nsec / 1e9;
}

/* ---- settings files ---------------------------------------------------------------------------------- */

static const char szFile[] = "/tmp/conform.conf";
static const char szOriginal[] = "# kept\nKEY=\"a b\"\nKEYS=other\nODD LINE\nKEY=second\n";

static void keys_are_read(void) {
  char szBuf[8];
  put(szFile, szOriginal, 0644);
  EXPECT(KOPACFileGetKeyValue(szFile, "KEY", szBuf, sizeof szBuf, 0) == 3 && !strcmp(szBuf, "a b"));
  EXPECT(KOPACFileGetKeyValue(szFile, "KEYS", szBuf, 4, 0) == 3 && !strcmp(szBuf, "oth"));
  EXPECT(KOPACFileGetKeyValue(szFile, "key", szBuf, sizeof szBuf, 0) == 0 && !szBuf[0]);
  EXPECT(KOPACFileCheckKeyValue(szFile, "KEY", "a b", 0) == 1);
  EXPECT(KOPACFileCheckKeyValue(szFile, "KEY", "a", 0) == 0);
  FAILS(KOPACFileGetKeyValue("/tmp/conform.none", "KEY", szBuf, sizeof szBuf, 0), 0x0900);
}

static void an_edit_keeps_what_it_does_not_name(void) {
  struct stat before, after;
  put(szFile, szOriginal, 0640);
  EXPECT(KOPACFileSetKeyValue(szFile, "KEY", "new", NULL) == 0);
  EXPECT(is(szFile, "# kept\nKEY=new\nKEYS=other\nODD LINE\n"));
  EXPECT(KOPACFileSetKeyValue(szFile, "ADDED", "x", "%s=\"%s\"\n") == 0);
  EXPECT(is(szFile, "# kept\nKEY=new\nKEYS=other\nODD LINE\nADDED=\"x\"\n"));
  EXPECT(KOPACFileRemoveKey(szFile, "KEYS") == 0 && KOPACFileRemoveKey(szFile, "KEYS") == 0);
  EXPECT(is(szFile, "# kept\nKEY=new\nODD LINE\nADDED=\"x\"\n"));
  EXPECT(stat(szFile, &before) == 0 && (before.st_mode & 07777) == 0640);
  EXPECT(KOPACFileSetKeyValue(szFile, "KEY", "new", NULL) == 0);
  EXPECT(stat(szFile, &after) == 0 && after.st_ino == before.st_ino); /* nothing to write */
}

static void an_edit_replaces_the_file_at_once(void) {
  struct stat before, after;
  int held;
  put(szFile, szOriginal, 0644);
  held = open(szFile, O_RDONLY);
  EXPECT(fstat(held, &before) == 0 && KOPACFileSetKeyValue(szFile, "KEY", "new", NULL) == 0);
  EXPECT(stat(szFile, &after) == 0 && after.st_ino != before.st_ino);
  EXPECT(fstat(held, &after) == 0 && after.st_size == before.st_size); /* a reader keeps the old one */
  close(held);
}

static void no_value_adds_a_line(void) {
  put(szFile, szOriginal, 0644);
  FAILS(KOPACFileSetKeyValue(szFile, "KEY", "x\nEVIL=1", NULL), 0x0D00);
  EXPECT(is(szFile, szOriginal));
}

static void several_keys_are_one_rewrite(void) {
  PKOPACSZHASH pSet = KOPACSzHashAlloc(4), pRemove = KOPACSzHashAlloc(4);
  put(szFile, "A=1\nB=2\nC=3\n", 0644);
  EXPECT(KOPACSzHashSetValue(&pSet, "Z", "26") == 0 && KOPACSzHashSetValue(&pSet, "B", "two") == 0);
  EXPECT(KOPACSzHashSetValue(&pSet, "Y", "25") == 0 && KOPACSzHashSetValue(&pRemove, "A", "") == 0);
  EXPECT(KOPACFileSetKeys(szFile, pSet, pRemove, NULL) == 0);
  EXPECT(is(szFile, "B=two\nC=3\nZ=26\nY=25\n"));
  KOPACSzHashFree(pSet);
  KOPACSzHashFree(pRemove);
}

/* Two processes add keys to one file: none is lost. */
static void editors_wait_for_each_other(void) {
  char szKey[16];
  int i, status = 0;
  pid_t pid;
  put(szFile, "", 0644);
  pid = fork();
  for (i = 0; i < 40; ++i) {
    snprintf(szKey, sizeof szKey, "%c%d", pid == 0 ? 'C' : 'P', i);
    if (KOPACFileSetKeyValue(szFile, szKey, "1", NULL) != 0) break;
  }
  if (pid == 0) _exit(i == 40 ? 0 : 1);
  EXPECT(i == 40 && waitpid(pid, &status, 0) == pid && status == 0);
  EXPECT(strlen(content(szFile)) == 2 * (10 * 5 + 30 * 6));
}

static void lists_and_hashes_copy(void) {
  PKOPACSZLIST pList = KOPACSzListAlloc(1);
  PKOPACSZHASH pHash = KOPACSzHashAlloc(1);
  char szText[] = "first";
  EXPECT(KOPACSzListPush(&pList, szText) == 0 && KOPACSzListPush(&pList, "second") == 0);
  szText[0] = 'X';
  EXPECT(pList->nItem == 2 && !strcmp(KOPACSzListGet(pList, 0), "first") && !KOPACSzListGet(pList, 2));
  EXPECT(KOPACSzListFind(pList, "second") == 1 && KOPACSzListFind(pList, "third") < 0);
  KOPACSzListRemoveAll(pList);
  EXPECT(pList->nItem == 0);
  EXPECT(KOPACSzHashSetValue(&pHash, "b", "1") == 0 && KOPACSzHashSetValue(&pHash, "a", "2") == 0);
  EXPECT(KOPACSzHashSetValue(&pHash, "b", "3") == 0 && !strcmp(KOPACSzHashGetValue(pHash, "b"), "3"));
  EXPECT(KOPACSzHashEnumKey(pHash, &pList) == 2 && !strcmp(KOPACSzListGet(pList, 0), "b"));
  KOPACSzListFree(pList);
  KOPACSzListFree(NULL);
  KOPACSzHashFree(pHash);
  KOPACSzHashFree(NULL);
}

/* ---- locks ---------------------------------------------------------------------------------------------- */

/* What another process answers that asks for a lock and waits no longer. */
static int other_gets(int classAndMode) {
  int status = -1;
  const pid_t pid = fork();
  if (pid == 0) _exit(KOPACFileLock(classAndMode, 0) == 0 ? 1 : 0);
  return waitpid(pid, &status, 0) == pid && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

static void readers_share_and_writers_exclude(void) {
  EXPECT(KOPACFileLock(kNetworkLock + kShared, 0) == 0);
  EXPECT(other_gets(kNetworkLock + kShared) == 1 && other_gets(kNetworkLock + kAlone) == 0);
  EXPECT(KOPACFileUnlock(kNetworkLock) == 0);
  EXPECT(KOPACFileLock(kNetworkLock + kAlone, 0) == 0);
  EXPECT(other_gets(kNetworkLock + kShared) == 0 && other_gets(0x800 + kAlone) == 1);
  EXPECT(KOPACFileLock(kNetworkLock + kAlone, 0) == 0); /* once more in this thread */
  EXPECT(KOPACFileUnlock(kNetworkLock) == 0 && other_gets(kNetworkLock + kShared) == 0);
  EXPECT(KOPACFileUnlock(kNetworkLock) == 0 && other_gets(kNetworkLock + kShared) == 1);
  FAILS(KOPACFileUnlock(kNetworkLock), 0x0400);
}

static void a_wait_lasts_its_time_and_a_dead_holder_lets_go(void) {
  int ready[2], status;
  char c;
  double begin;
  pid_t pid;
  EXPECT(pipe(ready) == 0);
  pid = fork();
  if (pid == 0) {
    c = KOPACFileLock(kNetworkLock + kAlone, 0) == 0 ? 'y' : 'n';
    if (write(ready[1], &c, 1) == 1) pause();
    _exit(1);
  }
  EXPECT(read(ready[0], &c, 1) == 1 && c == 'y');
  begin = now();
  FAILS(KOPACFileLock(kNetworkLock + kAlone, 1), 0x0400);
  EXPECT(now() - begin >= 0.9 && now() - begin < 2);
  kill(pid, SIGKILL);
  begin = now();
  EXPECT(KOPACFileLock(kNetworkLock + kAlone, 2) == 0 && now() - begin < 1);
  EXPECT(KOPACFileUnlock(kNetworkLock) == 0);
  waitpid(pid, &status, 0);
  close(ready[0]);
  close(ready[1]);
}

static void a_files_lock_outlives_the_file(void) {
  PKOPACFILELOCK pLock = NULL, pOther = NULL;
  put(szFile, "", 0644);
  EXPECT(KOPACFileLockTimeByFile(szFile, 1, 0, &pLock) >= 0 && pLock);
  put(szFile, "another file of this name", 0644);
  EXPECT(KOPACFileLockTimeByFile(szFile, 1, 0, &pOther) < 0 && !pOther);
  EXPECT(KOPACFileUnlockByFile(pLock) == 1);
  EXPECT(KOPACFileLockTimeByFile(szFile, 0, 0, &pOther) >= 0 && KOPACFileUnlockByFile(pOther) == 1);
}

/* ---- processes ------------------------------------------------------------------------------------------ */

static const char szScript[] = "/tmp/conform.program";

static void results_tell_how_a_program_ended(void) {
  const char* const argv[] = {szScript, "a b", "$(id);*", NULL};
  put(szScript, "#!/bin/sh\nexit 3\n", 0755);
  EXPECT(KOPACExec(szScript, NULL, NULL, NULL, NULL) == 3);
  EXPECT(KOPACExecl(szScript, 187, NULL) < 0);
  FAILS(KOPACExec("/tmp/conform.none", NULL, NULL, NULL, NULL), 0x2A00);
  put(szScript, "#!/bin/sh\nkill -TERM $$\n", 0755);
  FAILS(KOPACExec(szScript, NULL, NULL, NULL, NULL), 0x2A00);
  put(szScript, "#!/bin/sh\nprintf '%s\\n' \"$#\" \"$@\" >/tmp/conform.out\n", 0755);
  EXPECT(KOPACExecv(szScript, argv, 1) == 0);
  EXPECT(is("/tmp/conform.out", "2\na b\n$(id);*\n"));
}

static void a_program_starts_clean(void) {
  const int fd = open("/dev/null", O_RDONLY); /* without close-on-exec */
  const int kept = dup2(fd, 57);
  put(szScript, "#!/bin/bash\nexec >/tmp/conform.out\nreadlink /proc/$$/fd/0\n"
                "[ -e /proc/$$/fd/57 ] && echo yes || echo no\n"
                "read -r _ ignored < <(grep SigIgn /proc/$$/status)\necho $((0x$ignored & 0x1000))\n" /* SIGPIPE's bit */, 0755);
  signal(SIGPIPE, SIG_IGN);
  EXPECT(KOPACExec(szScript, NULL, NULL, NULL, NULL) == 0);
  signal(SIGPIPE, SIG_DFL);
  EXPECT(kept == 57 && is("/tmp/conform.out", "/dev/null\nno\n0\n"));
  close(fd);
  close(kept);
}

static void output_is_read(void) {
  char szLine[32] = "";
  FILE* fp;
  put(szScript, "#!/bin/sh\necho \"$1-$2\"\nexit 4\n", 0755);
  fp = KOPACPopen(szScript, "r", "a b", "c", NULL);
  EXPECT(fp && fgets(szLine, sizeof szLine, fp) && !strcmp(szLine, "a b-c\n"));
  EXPECT(fp && KOPACPclose(fp) == 4);
}

/* ---- the error state ------------------------------------------------------------------------------------- */

static void* in_another_thread(void* pSeen) {
  *(unsigned short*)pSeen = KOPACErrGet();
  KOPACErrSetEx(0x0400, "other", 2);
  return NULL;
}

static void the_error_state_is_the_threads(void) {
  unsigned short seen = 1;
  pthread_t thread;
  KOPACErrSetEx(0x0D00, "here", 7);
  EXPECT(pthread_create(&thread, NULL, in_another_thread, &seen) == 0 && pthread_join(thread, NULL) == 0);
  EXPECT(seen == 0 && KOPACErrGet() == 0x0D00);
  EXPECT(!strcmp(KOPACErrorGetFile(), "here") && KOPACErrorGetLine() == 7);
}

static void a_hidden_text_comes_back(void) {
  char szHidden[32], szShown[32];
  size_t i;
  EXPECT(KOPACCryptBufCrypt("secret word", 12, szHidden, sizeof szHidden) == 0);
  EXPECT(strlen(szHidden) == 11 && strcmp(szHidden, "secret word") != 0);
  for (i = 0; i < strlen(szHidden); ++i) EXPECT(szHidden[i] >= ' ' && szHidden[i] <= '~');
  EXPECT(KOPACCryptBufCrypt(szHidden, sizeof szHidden, szShown, sizeof szShown) == 0 && !strcmp(szShown, "secret word"));
}

/* ---- events, services, the edition ------------------------------------------------------------------------ */

static void an_event_runs_its_plugins_in_order(void) {
  PKOPAPLUGIN pPlugin = NULL;
  PKOPACSZLIST pList = KOPACSzListAlloc(2);
  mkdir("/usr/zarn/plugins/net/conform", 0755);
  unlink("/tmp/conform.out");
  put("/usr/zarn/plugins/net/conform/20-second", "#!/bin/sh\necho second \"$1\" \"$ONE\" >>/tmp/conform.out\n", 0755);
  put("/usr/zarn/plugins/net/conform/10-first",
      "#!/bin/sh\necho first \"$1\" \"$NUMBER\" \"$L_1\" \"$L_2\" \"$L_COUNT\" >>/tmp/conform.out\nexit 1\n", 0755);
  KOPACSzListPush(&pList, "x y");
  KOPACSzListPush(&pList, "z");
  EXPECT(KOPAPluginSDKInit("net", "conform", &pPlugin) == 0 && KOPAPluginHasInit(pPlugin) == 1);
  EXPECT(KOPAPluginSetArg(pPlugin, "ONE", "$HOME;a b") == 0 && KOPAPluginSetArgByInt(pPlugin, "NUMBER", -7) == 0);
  EXPECT(KOPAPluginSetArgByArray(pPlugin, "L", pList) == 0);
  EXPECT(KOPAPluginSetArg(pPlugin, "PATH", "/tmp") < 0);
  EXPECT(KOPAPluginAction(4, pPlugin) < 0); /* the first one fails, the second is run all the same */
  KOPAPluginExit(pPlugin);
  EXPECT(is("/tmp/conform.out", "first pre -7 x y z 2\nsecond pre $HOME;a b\n"));
  pPlugin = NULL;
  EXPECT(KOPAPluginSDKInit("net", "conform_none", &pPlugin) == 0 && KOPAPluginAction(5, pPlugin) == 0);
  KOPAPluginExit(pPlugin);
  KOPAPluginExit(NULL);
  EXPECT(KOPAPluginHasInit(NULL) == 0);
  KOPACSzListFree(pList);
}

static void an_appliance_without_settings_is_alone(void) {
  char szBuf[32];
  ZARNNETIFADDR info;
  memset(&info, 0, sizeof info);
  EXPECT(ZARNHAIsActive() == 0 && ZARNHAIsRunning() == 0 && ZARNHAHasHAIF() == 0);
  EXPECT(ZARNHAGetMac("eth0", szBuf, sizeof szBuf) == -1 && ZARNHAGetHeartbeatIF(szBuf, sizeof szBuf) == -1);
  EXPECT(ZARNHAGetRelatedIFInfo("eth0", &info) == -1 && ZARNIsDockerPLV() == 0);
}

static void run(const char* szWhat, void (*pfnCheck)(void)) {
  pszWhat = szWhat;
  blFine = 1;
  fflush(stdout);
  pfnCheck();
  printf("%s %s\n", blFine ? "ok     " : "FAILED ", pszWhat);
  if (blFine) ++cPassed;
  else ++cFailed;
}

int main(void) {
  umask(022);
  run("keys are read", keys_are_read);
  run("an edit keeps what it does not name", an_edit_keeps_what_it_does_not_name);
  run("an edit replaces the file at once", an_edit_replaces_the_file_at_once);
  run("no value adds a line", no_value_adds_a_line);
  run("several keys are one rewrite", several_keys_are_one_rewrite);
  run("editors wait for each other", editors_wait_for_each_other);
  run("lists and hashes copy", lists_and_hashes_copy);
  run("readers share a lock class and writers exclude", readers_share_and_writers_exclude);
  run("a wait lasts its time, and a dead holder lets go", a_wait_lasts_its_time_and_a_dead_holder_lets_go);
  run("a file's lock outlives the file", a_files_lock_outlives_the_file);
  run("results tell how a program ended", results_tell_how_a_program_ended);
  run("a program starts clean", a_program_starts_clean);
  run("output is read", output_is_read);
  run("the error state is the thread's", the_error_state_is_the_threads);
  run("a hidden text comes back", a_hidden_text_comes_back);
  run("an event runs its plugins in order", an_event_runs_its_plugins_in_order);
  run("an appliance without settings is alone", an_appliance_without_settings_is_alone);
  printf("%d passed, %d failed, 0 skipped\n", cPassed, cFailed);
  return cFailed != 0;
}
