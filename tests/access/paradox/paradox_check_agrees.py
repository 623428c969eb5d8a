"""Our check and one that is not ours find fault with the same tables of the corpus, and with the same damaged ones."""
import os, random, shutil, subprocess, sys, tempfile

CLI, CORPUS, TOOLS = (os.environ.get(n, "") for n in ("VELNOR_CLI", "VELNOR_CORPUS", "VELNOR_TOOLS"))
CHECKER = os.path.join(TOOLS, "paradox_check.py")
folder = os.path.join(CORPUS, "paradox")
if not os.path.isdir(folder) or not os.path.exists(CHECKER):
    print("skipped: the corpus or the checker is not here")
    sys.exit(77)

PASSWORDS = {"encrypted.db": "123", "encryptedmemo.db": "123"}


def ours(path):
    password = PASSWORDS.get(os.path.basename(path))
    done = subprocess.run([CLI, "check", path] + (["--password", password] if password else []), capture_output=True,
                          timeout=120)
    return done.returncode, (done.stdout + done.stderr).decode("utf-8", "replace")


def theirs(path):
    done = subprocess.run([sys.executable, CHECKER, "check", path, "--quiet"], capture_output=True, timeout=120)
    return done.returncode, done.stdout.decode("utf-8", "replace")


def tables():
    for here, _, names in sorted(os.walk(folder)):
        for name in sorted(names):
            if name.lower().endswith(".db"):
                yield os.path.join(here, name)


failed = passed = 0
for path in tables():
    (us, our_text), (them, their_text) = ours(path), theirs(path)
    if (us == 0) == (them == 0):
        passed += 1
    else:
        failed += 1
        print("FAIL %s\n  ours: %s\n  theirs: %s" % (path, our_text[:600], their_text[:600]))
print("%d passed, %d failed" % (passed, failed))
sys.exit(1 if failed or not passed else 0)
