# SPDX-License-Identifier: Apache-2.0
"""zarnnetctl as the modules call it: an argument vector, a document on its input, JSON back."""
import json


def run(module, words, document=None):
    """The report of one call; what zarnnetctl says without a report becomes one."""
    program = module.get_bin_path("zarnnetctl", required=True)
    status, out, err = module.run_command([program] + words + ["--json"], data=document)
    for text in (out, err):
        answer = _object_in(text)
        if answer is None:
            continue
        error = answer.get("error")
        if error is None:
            return answer
        what = "" if error["what"] == "usage" else error["what"] + ": "
        return {"result": status, "reason": what + error["reason"]}
    return {"result": status or 1, "reason": "zarnnetctl ended with %d: %s" % (status, err.strip())}


def failure(report):
    """Why there is no change, in sentences: each path with what was wanted and what was found."""
    reason = report.get("reason", "no reason was given")
    further = ["%(path)s: %(sentence)s" % finding for finding in report.get("findings", [])]
    further += [difference(row) for row in report.get("differences", [])]
    further += report.get("problems", [])
    severities = {finding["severity"] for finding in report.get("findings", [])}
    if "insisted" in severities and "refused" not in severities:
        further.append("force does it all the same")
    return "; ".join([reason] + [text for text in further if text not in reason])


def difference(row):
    """One difference as a sentence."""
    sides = ["the %s %s %s" % (side, verb, _shown(row[side]))
             for side, verb in (("files", "have"), ("kernel", "has")) if side in row]
    return ", ".join(["%s: wanted %s" % (row["path"], _shown(row["wanted"]))] + sides)


def warn(module, report):
    """What the administrator should know of a change that was made."""
    sentences = ["%(path)s: %(sentence)s" % finding for finding in report.get("findings", [])]
    sentences += report.get("lost", [])
    if "recovered" in report:
        sentences.append(report["recovered"])
    for sentence in sentences:
        module.warn(sentence)


def _object_in(text):
    try:
        answer = json.loads(text)
    except ValueError:
        return None
    return answer if isinstance(answer, dict) else None


def _shown(value):
    if value is None:
        return "nothing"
    return json.dumps(value, separators=(",", ":"), sort_keys=True, ensure_ascii=False)
