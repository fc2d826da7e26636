"""Reads what `parvigif --json` prints with an independent JSON reader and compares it with the disk."""

import base64
import json
import os
import shutil
import subprocess
import sys
import tempfile

program, samples = map(os.fsencode, sys.argv[1:])


def run(folder, *arguments):
    """Status and the objects printed, one per line."""
    own = os.path.join(folder, b"own")
    settings = dict(os.environ, XDG_CONFIG_DIRS=own, XDG_CONFIG_HOME=own, XDG_STATE_HOME=own)
    result = subprocess.run([program, b"--json", *arguments], cwd=folder, stdout=subprocess.PIPE, env=settings)
    lines = result.stdout.decode("utf-8").split("\n")[:-1]  # strict: a stray byte would raise
    first, *records = [json.loads(line) for line in lines]
    mode = "output" if b"-o" in map(os.fsencode, arguments) else "replace"
    assert (first["type"], first["schema"], first["mode"]) == ("run", 1, mode)
    return result.returncode, records


with tempfile.TemporaryDirectory() as name:
    folder = os.fsencode(name)
    strange = b'a\n"\\\x1b \xc3\xa9 \xed\xa0\x80\xff.gif'
    shutil.copy(os.path.join(samples, b"ball.gif"), os.path.join(folder, strange))
    shutil.copy(os.path.join(samples, b"icon.gif"), folder)
    with open(os.path.join(folder, b"bad.gif"), "wb") as file:
        file.write(b"GIF89a")
    open(os.path.join(folder, b"empty.gif"), "wb").close()

    status, records = run(folder, "-q", strange, "icon.gif", "bad.gif", "empty.gif", "none.gif")
    assert status == 1, status
    none, ball, icon, bad, empty, summary = records  # what cannot be queued is known first

    assert ball["status"] == icon["status"] == "smaller"
    assert base64.b64decode(ball["path_base64"]) == strange
    assert base64.b64decode(ball["backup_base64"]) == strange + b".BAK"
    assert ball["path"] == 'a\n"\\\x1b \xe9 ' + "\ufffd" * 4 + ".gif"
    assert icon["path"] == "icon.gif" and icon["backup"] == "icon.gif.BAK" and "path_base64" not in icon
    for record, path in (ball, strange), (icon, b"icon.gif"):
        path = os.path.join(folder, path)
        assert record["input_bytes"] == os.path.getsize(path + b".BAK")
        assert record["output_bytes"] == os.path.getsize(path)
        assert record["saved_bytes"] == record["input_bytes"] - record["output_bytes"] > 0
        share = 100 * record["saved_bytes"] / record["input_bytes"]
        assert abs(record["saved_percent"] - share) <= 0.005 + 1e-9
        assert 0.5 < record["ssim"] <= 1 and 0 <= record["max_difference"] <= 255
        assert record["error_code"] is record["message"] is None
        assert record["damaged"] is record["dry_run"] is False
    assert ball["frames"] > 1 == icon["frames"]
    shutil.copy(os.path.join(samples, b"spinner.gif"), folder)
    _, (spinner, _) = run(folder, "spinner.gif")
    assert 0 < spinner["max_difference"] <= 28

    shutil.copy(os.path.join(samples, b"../fuzz/seeds/gif/ends-early.gif"), os.path.join(folder, b"short.gif"))
    status, (short, _) = run(folder, "--no-backup", "short.gif")
    assert (status, short["status"], short["damaged"]) == (0, "unchanged", True)
    assert short["message"] == "left as it was: frame 1 ends early, and no backup would be kept"
    status, (short, _) = run(folder, "short.gif")
    assert (status, short["status"], short["damaged"]) == (0, "smaller", True)
    assert short["message"] == "frame 1 ends early; the original is kept as short.gif.BAK"

    assert (bad["status"], bad["error_code"], bad["input_bytes"]) == ("failed", 18, 6)
    assert bad["message"] == "the file ends too early (code 18)" and bad["backup"] is bad["ssim"] is None
    assert (empty["status"], empty["message"], empty["frames"]) == ("skipped", "skipped: empty", None)
    assert (none["path"], none["status"], none["error_code"]) == ("none.gif", "failed", 10)
    assert none["input_bytes"] is None
    assert len({tuple(key for key in r if not key.endswith("_base64")) for r in records[:-1]}) == 1

    counts = {key: summary[key] for key in ("smaller", "unchanged", "skipped", "failed", "cancelled")}
    assert counts == dict(smaller=2, unchanged=0, skipped=1, failed=2, cancelled=False), counts
    for key in ("input_bytes", "output_bytes", "saved_bytes"):
        assert summary[key] == ball[key] + icon[key]

    assert (icon["output"], bad["output"]) == ("icon.gif", "bad.gif")
    status, (elsewhere, counted) = run(folder, "-o", "new", "icon.gif")
    assert (elsewhere["output"], elsewhere["status"]) == ("new/icon.gif", "unchanged")
    assert summary["type"] == "summary" and counted["unchanged"] == 1
