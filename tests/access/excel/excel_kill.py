"""kill -9 at random moments while records are added to a workbook: it is the old one or the new one, whole, nothing is
left behind after the next write, and the sheet beside the table is as it was."""
import csv, io, os, random, signal, subprocess, sys, tempfile, time

CLI = os.environ["VELNOR_CLI"]
ROUNDS = int(os.environ.get("VELNOR_KILL_ROUNDS", "12"))


def cli(*words):
    done = subprocess.run([CLI, *words], stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=120)
    if done.returncode:
        raise AssertionError("velnor-cli %s: %s" % (" ".join(words), done.stderr.decode()[-300:]))
    return list(csv.reader(io.StringIO(done.stdout.decode(), newline="")))


def write_rows(path, count):
    with open(path, "w") as f:
        f.write("NAME,AMOUNT\n")
        for i in range(count):
            f.write("Person %d,%d.5\n" % (i, i))


def main():
    rng = random.Random(int(os.environ.get("VELNOR_SEED", "7")))
    with tempfile.TemporaryDirectory() as folder:
        few, many = os.path.join(folder, "few.csv"), os.path.join(folder, "many.csv")
        write_rows(few, 500)
        write_rows(many, 20000)
        target = os.path.join(folder, "target.xls")
        cli("convert", few, target, "--table", "People")
        cli("convert", few, target, "--table", "Beside")
        before = open(target, "rb").read()
        add = ["convert", many, target, "--table", "People", "--add"]
        start = time.monotonic()
        cli(*add)
        longest = time.monotonic() - start
        whole = len(cli("export", target, "People$"))
        cut = 0
        for number in range(ROUNDS):
            with open(target, "wb") as f:
                f.write(before)
            work = subprocess.Popen([CLI, *add], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            time.sleep(rng.random() * longest)
            work.send_signal(signal.SIGKILL)
            cut += work.wait() != 0
            rows = len(cli("export", target, "People$"))
            assert rows in (501, whole), "round %d: %d records" % (number, rows - 1)
            assert len(cli("export", target, "Beside$")) == 501
            cli("check", target)
            cli("convert", few, target, "--table", "People", "--add")
            assert len(cli("export", target, "People$")) == rows + 500
            left = [f for f in os.listdir(folder) if f not in ("few.csv", "many.csv", "target.xls")]
            assert not left, "left behind: %s" % left
        print("%d rounds passed, %d of them cut" % (ROUNDS, cut))
    return 0


sys.exit(main())
