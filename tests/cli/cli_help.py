"""The help of velnor-cli, its manual page, its completion and its commands say the same, and tests try all of it."""
import glob, os, re, shutil, subprocess
from cli_support import *


def commands():
    out, _ = cli("--help")
    listed = re.findall(r"^  (\S+) +\S", out.split("Commands:")[1], re.M)
    assert len(listed) >= 14, listed
    return listed


def options_of(command):
    """Option -> value word, as --help prints them."""
    out, _ = cli(command, "--help")
    found = {}
    for name, value in re.findall(r"^  (--\S+)(?: (\S+(?: \S+)*?))?  +\S", out, re.M):
        found[name] = value
    return out, found


def test_every_command_has_help_and_refuses_unknown_options(folder):
    for command in commands():
        out, options = options_of(command)
        assert out.startswith("Usage: velnor-cli %s" % command), out
        assert "--help" in options, command
        _, err = cli(command, "--no-such-option", "x", "y", ok=2)
        assert "unknown option --no-such-option" in err, err


def test_manual_page_says_what_help_says(folder):
    page, _ = cli("--man")
    page = page.replace("\\-", "-").replace("\\e", "\\")
    sections = dict(re.findall(r"^\.SS (\S+)[^\n]*\n(.*?)(?=^\.S[SH] |\Z)", page, re.M | re.S))
    assert list(sections) == commands(), list(sections)
    for command in commands():
        _, options = options_of(command)
        there = re.findall(r"^\.B (--\S+)", sections[command], re.M)
        assert sorted(there + ["--help"]) == sorted(options), (command, there, options)


def test_every_option_is_tried_by_some_test(folder):
    tests = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
    scripts = "".join(open(path, encoding="utf-8").read() for path in glob.glob(os.path.join(tests, "**", "*.py"), recursive=True))
    for command in commands():
        for option in options_of(command)[1]:
            assert '"%s"' % option in scripts, "%s %s" % (command, option)


def test_manual_page_is_good_roff(folder):
    need = shutil.which("man")
    if not need:
        print("  man is not installed: not looked at")
        return
    page = os.path.join(folder, "velnor-cli.1")
    open(page, "w").write(cli("--man")[0])
    done = subprocess.run(["man", "--warnings", "-l", page], capture_output=True,
                          env=dict(os.environ, MANPAGER="cat", LC_ALL="C.UTF-8", MANWIDTH="100"))
    assert done.returncode == 0 and not done.stderr, done.stderr
    assert b"velnor-cli" in done.stdout


def complete(folder, line):
    script = os.path.join(folder, "c.bash")
    open(script, "w").write(cli("--completion")[0])
    words = line.split(" ")
    code = 'source "%s"; COMP_WORDS=(%s); COMP_CWORD=%d; _velnor_cli; printf "%%s\\n" "${COMPREPLY[@]}"' % (
        script, " ".join("'%s'" % w for w in words), len(words) - 1)
    return subprocess.run(["bash", "-c", code], capture_output=True, check=True).stdout.decode().split()


def test_completion_knows_commands_options_and_choices(folder):
    assert set(commands()) <= set(complete(folder, "velnor-cli "))
    assert complete(folder, "velnor-cli qu") == ["query"]
    for command in commands():
        _, options = options_of(command)
        assert sorted(complete(folder, "velnor-cli %s --" % command)) == sorted(options), command
    assert "ndjson" in complete(folder, "velnor-cli query x.dbf --format ")


if __name__ == "__main__":
    run_cases(globals())
