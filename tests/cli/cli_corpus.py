"""Every table of every real file is exported and compared with what independent readers found in it.

EXCEPTIONS names the tables where we differ on purpose, with the reason."""
import subprocess, sys, os

from cli_support import CLI, CORPUS, TOOLS, need_corpus

KINDS = "xbase,jet"
EXCEPTIONS = {
    # "xbase/folder/file.dbf [table]": "reason",
}

need_corpus()
done = subprocess.run([sys.executable, os.path.join(TOOLS, "corpus_run.py"), "--cli", CLI, "--corpus", CORPUS,
                       "--kind", KINDS], stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
text = done.stdout.decode("utf-8", "replace")
print(text)
failures = [line for line in text.splitlines() if line.startswith("FAIL")
            and not any(name in line for name in EXCEPTIONS)]
passed = sum(int(line.split()[1]) for line in text.splitlines() if " passed (" in line)
print("%d passed, %d failed" % (passed, len(failures)))
sys.exit(1 if failures or not passed else 0)
