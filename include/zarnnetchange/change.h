/* SPDX-License-Identifier: Apache-2.0 */
/* Changes that can be trusted: looked at first, made as a whole, compared with the machine afterwards, and put back when
 * they are not what was asked for. The state of the machine's networking is one JSON document (UTF-8), whose fields
 * state-1.json describes; ZARNNetChangeSchema() returns the same text.
 *
 * A wish is a part of that document, merged into it as RFC 7396 says: what is named is wanted, what is not named stays,
 * null removes. {"interfaces": {"eth0": {"ipv4": {"address": "192.168.50.10", "prefix": 24}}}}
 *
 * Every function answers a ZARNNETCHANGE_... and, through its last argument, a text that ZARNNetChangeFree() frees; null
 * where there was no memory for it. It never throws. Paths in these texts are JSON pointers (RFC 6901).
 * The functions may be called by several threads. One change is made at a time on the machine: a second one, also of
 * another process, waits for options.wait seconds and is told who holds the first. */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/** What came of a call; the tool's exit status. */
enum {
  ZARNNETCHANGE_DONE = 0,        /* in effect; what can only come later (a lease) is named */
  ZARNNETCHANGE_FAILED = 1,      /* a step failed, and everything was put back */
  ZARNNETCHANGE_USAGE = 2,       /* no document, no such field, a value that cannot be meant */
  ZARNNETCHANGE_REFUSED = 3,     /* a rule refuses it; nothing was touched */
  ZARNNETCHANGE_OTHERWISE = 4,   /* the steps succeeded; the machine is not as wished */
  ZARNNETCHANGE_BUSY = 5,        /* somebody else is making a change */
  ZARNNETCHANGE_NOT_ALLOWED = 6, /* only root may */
  ZARNNETCHANGE_NOT_FOUND = 7,   /* it names an interface or a thing that there is not */
  ZARNNETCHANGE_NOT_PUT_BACK = 8 /* it failed, and was not put back wholly */
};

/** Told what a change is doing, {"step": 2, "steps": 5, "what": "...", "seconds": 0.8}, on the calling thread while the
 * change is under way. The text is gone when it returns. It must not call these functions, nor throw. */
typedef void (*PFNZARNNETCHANGE)(const char* szProgress, void* pContext);

/**
 * Reads the state of the machine.
 * @param szOptions  null, or a JSON object:
 *                   "view": "configured" (the files; what a wish is merged into), "live" (the kernel and what runs) or
 *                           "both" (an object with these two), "configured" without it;
 *                   "sections": a list of the sections wanted, all without it;
 *                   "secrets": true puts passwords into the document (root only; false without it)
 * @param ppszState  receives the document, or {"result": ..., "reason": ...} when there is none
 * @return ZARNNETCHANGE_DONE, _USAGE, _NOT_ALLOWED (secrets), _FAILED (the kernel cannot be asked)
 * Locks: those of the library's readers. What another user than root may not read is left out.
 *
 *     char* szState = NULL;
 *     if (ZARNNetChangeRead("{\"sections\": [\"interfaces\"]}", &szState) == ZARNNETCHANGE_DONE) puts(szState);
 *     ZARNNetChangeFree(szState);
 */
int ZARNNetChangeRead(const char* szOptions, char** ppszState);

/**
 * Compares a wish with the machine; changes nothing.
 * @param szWish      the wish
 * @param szOptions   null, or a JSON object, as for ZARNNetChangeApply()
 * @param ppszReport  receives the report of ZARNNetChangeApply() with the differences and without steps
 * @return ZARNNETCHANGE_DONE (no difference), _OTHERWISE, _USAGE, _FAILED
 */
int ZARNNetChangeCompare(const char* szWish, const char* szOptions, char** ppszReport);

/**
 * Checks a wish: its form, and the rules. Changes nothing; asks the network for an address that is to be set, unless
 * "probe" is false.
 * @param szWish      the wish
 * @param szOptions   as for ZARNNetChangeApply()
 * @param ppszReport  receives the report, with the findings and the steps that a change would take
 * @return ZARNNETCHANGE_DONE (it may be applied), _USAGE, _REFUSED, _NOT_FOUND, _FAILED
 */
int ZARNNetChangeCheck(const char* szWish, const char* szOptions, char** ppszReport);

/**
 * Plans a change: makes it in a private copy of the machine and tells what that did there. The machine itself is not
 * touched: no file, no setting of the kernel, no service, no plugin, no frame on the network. The copy has namespaces of
 * its own (mounts, network, host name, processes), a layer of memory over /etc, /run, /tmp and /var, and a replica of every
 * interface; programs that work on these run in it, those that reach out of it are noted and answered. Needs Linux 5.12
 * with overlayfs and veth; another user than root needs user namespaces, and plans with what he may read.
 * The rehearsal is a program of its own, zarnnet-rehearsal, which is found from the library.
 * @param szWish     the wish; null plans ZARNNetChangeUndo() of the change "number" of the options, the last without it, which
 *                   root alone may
 * @param szOptions  as for ZARNNetChangeApply(); the network is asked for addresses only when "probe" is true. Without a
 *                   wish also "calls": plans these calls of libzarnnetsdk, which no document can wish, each a list of
 *                   texts, the function and its arguments: [["ZARNNetFlushIP", "-4", "eth0"]]; ZARNNetDNSUpdate,
 *                   ZARNNetFlushIP, ZARNNetIPv6IPAction, ZARNNetIpv6Init, ZARNNetRenameEth,
 *                   ZARNNetClearPPPoERelayConfigAll, NetRoutetableHandler and NetRoutetableCheck
 * @param ppszPlan   receives the report of ZARNNetChangeApply(), as the change would end ("state" of a step as rehearsed),
 *                   and:
 *                   "wish", "options", "inputs": what the plan was made of; the inputs as hashes. No secret is in it;
 *                   "files": each "path", "change" ("new", "changed", "gone"), "diff" (unified), and "mode" and "owner"
 *                   ("before", "after") where they differ;
 *                   "programs": each "program", "arguments", "rehearsed" (false: it was answered) and "within", the script
 *                   that made the call;
 *                   "events": of plugins, each "event", "stage" ("pre", "post"), "arguments";
 *                   "kernel": each "setting", "before", "after" (null: none);
 *                   "services": each "name", "action" ("started", "stopped", "restarted", "reloaded") and, where it is
 *                   known, "downAtLeastSeconds";
 *                   "record": the folder in which the change would be recorded;
 *                   "notRehearsed": each "what" and "reason";
 *                   "seconds": how long the rehearsal took
 * @return what ZARNNetChangeApply() would answer in the copy; ZARNNETCHANGE_FAILED as well where no copy can be made
 *
 *     char* szPlan = NULL;
 *     ZARNNetChangePlan("{\"host\": {\"name\": \"nas\"}}", NULL, &szPlan);
 *     if (szPlan) fputs(szPlan, stderr);
 *     ZARNNetChangeFree(szPlan);
 */
int ZARNNetChangePlan(const char* szWish, const char* szOptions, char** ppszPlan);

/**
 * Makes a change: checks the wish, keeps what the machine's files and kernel are, takes the steps, reads the machine again
 * and compares it with the wish; whatever fails, everything is put back and compared with what was kept. SIGHUP, SIGINT
 * and SIGTERM are held off on the calling thread from the first step to the end. Needs root.
 * @param szWish      the wish
 * @param szOptions   null, or a JSON object:
 *                    "insist": true does what rules refuse that can be insisted on;
 *                    "keep": true keeps a change that is stored and not in effect (a driver or partner yet to come);
 *                    "wait": seconds to wait for another change to end, 0 to 3600, 5 without it;
 *                    "probe": false does not ask the network who has an address;
 *                    "restart": paths of what is started anew though nothing of it changes
 *                    ("/interfaces/eth0", "/dhcp_server", "/pppoe", "/pppoe_relay", "/tunnel");
 *                    "plan": a plan of ZARNNetChangePlan(), as an object; refused when it is for another wish, when its
 *                    options were others, or when what it was made of has changed since;
 *                    "program": the name that others are told while they wait;
 *                    "confirm": seconds, 0 for the settings' (/etc/zarnnet.conf: confirm_seconds, 60 without it) and
 *                    what the machine needs until such a change can be seen: everything is put back unless
 *                    ZARNNetChangeConfirm() comes in time, whatever becomes of this process and its session
 * @param pfnProgress told of each step; may be null
 * @param pContext    handed on to pfnProgress
 * @param ppszReport  receives the report:
 *                    "result" (number), "reason" (a sentence);
 *                    "findings": what rules found, each "rule", "path", "severity" ("refused", "insisted", "warning",
 *                    "not found", "usage") and "sentence";
 *                    "steps": each "what", "path", "setter", "touches" (files and programs), "state" ("planned", "done",
 *                    "failed") and, for a failure, "code", "reason" and "place";
 *                    "differences": each "path", "wanted", "files", "kernel" (absent where there is no such side);
 *                    "awaited": what comes later, each "path" and "sentence";
 *                    "repaired": what steps took away and the change put back, sentences; "lost": what it could not;
 *                    "restored": true when all was put back, false when not wholly; absent when nothing was. Then
 *                    "problems" has a sentence for each thing that is not as it was;
 *                    "holder": of another change, "program", "pid", "since"; of one that waits to be confirmed "number",
 *                    "program", "who", "since", "seconds_left";
 *                    "number" of the change: it has one from before its first step on, and a refused one, too;
 *                    "confirm" of a change that waits: "number", "seconds", "until";
 *                    "recovered": what had to be put back of the change before, a sentence
 *                    No secret is in it
 * @return a ZARNNETCHANGE_...
 * Files: its record in /var/lib/zarnnet, root's alone; nothing is touched when that cannot be written.
 * Locks: /run/zarnnet/change.lock, and the exclusive network lock for the time of the steps.
 *
 *     char* szReport = NULL;
 *     int result = ZARNNetChangeApply("{\"host\": {\"name\": \"nas\"}}", NULL, NULL, NULL, &szReport);
 *     if (result != ZARNNETCHANGE_DONE && szReport) fputs(szReport, stderr);
 *     ZARNNetChangeFree(szReport);
 */
int ZARNNetChangeApply(const char* szWish, const char* szOptions, PFNZARNNETCHANGE pfnProgress,
                       void* pContext, char** ppszReport);

/**
 * Confirms the change that waits for it, or gives it more time. Needs root.
 * @param szOptions   null, or a JSON object:
 *                    "number": the change that is meant; the one that waits without it;
 *                    "extend": seconds more, in place of a confirmation;
 *                    "wait", "program": as for ZARNNetChangeApply()
 * @param ppszReport  receives "result", "reason", "number" and, for a change that waits on, "confirm"
 * @return ZARNNETCHANGE_DONE, _NOT_FOUND (none waits, or another), _FAILED (too late: it was put back; or it cannot be
 *         written down, and waits on), _BUSY, _NOT_ALLOWED, _USAGE
 * Locks: /run/zarnnet/change.lock
 *
 *     if (ZARNNetChangeConfirm("{\"number\": 17}", NULL) != ZARNNETCHANGE_DONE) puts("change 17 does not wait");
 */
int ZARNNetChangeConfirm(const char* szOptions, char** ppszReport);

/**
 * Shows the changes that were made, refused or put back. Needs root.
 * @param szOptions    null, or a JSON object: "number": one change, with its wish and the differences of its files
 * @param ppszHistory  receives "result", "reason" and "changes", or "change": each "number", "state" ("open", "waiting",
 *                     "kept", "failed", "reverted", "refused", "not put back", "unreadable"), "began", "seconds",
 *                     "program", "who" ("uid", "login", "sudo"), "from" (the session), "steps", "result", "reason",
 *                     "undoes"; of one change also "wish", "options", "files" (each "path", "before" and "after",
 *                     SHA-256 digests, and "diff"), "problems", "settled" and "settled_by" (when and by whom it was
 *                     confirmed or put back). No secret is in it
 * @return ZARNNETCHANGE_DONE, _NOT_FOUND, _FAILED (the record is damaged, or of a newer version), _NOT_ALLOWED, _USAGE
 *
 *     char* szHistory = NULL;
 *     if (ZARNNetChangeHistory(NULL, &szHistory) == ZARNNETCHANGE_DONE) puts(szHistory);
 *     ZARNNetChangeFree(szHistory);
 */
int ZARNNetChangeHistory(const char* szOptions, char** ppszHistory);

/**
 * Goes back to what files, kernel and services were before a change; what later changes did is undone with it. It is a
 * change itself: it has a number, is compared, can be confirmed and undone. A change that waits to be confirmed is put
 * back as if its time were over. Leases stay those of today. Needs root.
 * @param szOptions    null, or a JSON object:
 *                     "number": the change; the last one that stands without it;
 *                     "insist": true loses what was changed by something else than a change since (the report names
 *                     the files), and the caller's own path;
 *                     "confirm", "keep", "wait", "program": as for ZARNNetChangeApply()
 * @param pfnProgress  as for ZARNNetChangeApply()
 * @param pContext     handed on to pfnProgress
 * @param ppszReport   receives the report of ZARNNetChangeApply(), and "undoes": the number of the change
 * @return ZARNNETCHANGE_DONE, _REFUSED, _NOT_FOUND, _FAILED (its record is damaged, or is kept no longer), _OTHERWISE
 *         (the machine did not become as it was, and everything was put back), _NOT_PUT_BACK, _BUSY, _NOT_ALLOWED, _USAGE
 * Locks: as for ZARNNetChangeApply()
 *
 *     if (ZARNNetChangeUndo("{\"number\": 17}", NULL, NULL, NULL) != ZARNNETCHANGE_DONE) puts("not undone");
 */
int ZARNNetChangeUndo(const char* szOptions, PFNZARNNETCHANGE pfnProgress, void* pContext,
                      char** ppszReport);

/**
 * Puts back a change that was not confirmed in time, was not confirmed before the machine started anew, or whose process
 * was killed on the way. Every other function that root calls does the same first; this one is for start scripts. Needs
 * root.
 * @param szOptions   null, or a JSON object:
 *                    "starting": true for a machine of which no interface is configured yet: of a change of before the
 *                    start the files alone are put back, and the start sets up the kernel from them;
 *                    "watch": the number of a change: stays until it is confirmed or put back;
 *                    "wait", "program": as for ZARNNetChangeApply()
 * @param ppszReport  receives "result", "reason", "number", "restored" and "problems" of what was put back, "confirm" of
 *                    what waits
 * @return ZARNNETCHANGE_DONE (also when there was nothing to do), _NOT_PUT_BACK, _FAILED (a record is damaged), _BUSY,
 *         _NOT_ALLOWED, _USAGE
 * Locks: as for ZARNNetChangeApply()
 *
 *     if (ZARNNetChangeRecover("{\"starting\": true}", NULL) != ZARNNETCHANGE_DONE) puts("see the history");
 */
int ZARNNetChangeRecover(const char* szOptions, char** ppszReport);

/**
 * The JSON Schema (2020-12) of the state document.
 * @param ppszSchema  receives the text
 * @return ZARNNETCHANGE_DONE; _FAILED with null when out of memory
 */
int ZARNNetChangeSchema(char** ppszSchema);

/**
 * Frees a text of these functions, which is overwritten first; null is allowed.
 * @param szText  the text
 */
void ZARNNetChangeFree(char* szText);

#ifdef __cplusplus
}
#endif
