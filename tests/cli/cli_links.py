"""Links of a real Access file: they are told from tables, wherever tables are listed."""
import json, os, shutil

from cli_support import CORPUS, cli, need_corpus, records, run_cases

need_corpus()


def linked(folder):
    path = os.path.join(folder, "linked.mdb")
    shutil.copyfile(os.path.join(CORPUS, "jet", "spannm-linked.mdb"), path)
    return path


def test_lists_of_tables_mark_links(folder):
    path = linked(folder)
    lines = [line.split("\t") for line in cli("tables", path)[0].splitlines()]
    links = {line[0]: line[1] for line in lines if len(line) > 1}
    assert links.get("Table1") == "link to Table1", lines
    told = json.loads(cli("tables", path, "--json")[0])
    assert told["tables"] == [line[0] for line in lines] and told["links"] == sorted(links), told
    _, err = cli("export", path, "Table1", ok=False)
    assert "Error - 3251 - " in err, err


def test_schemas_mark_links(folder):
    path = linked(folder)
    assert "Table1, link to Table1\n" in cli("schema", path)[0]
    tables = json.loads(cli("schema", path, "--json")[0])["tables"]
    assert [t["linkTo"] for t in tables if t["name"] == "Table1"] == ["Table1"]


def test_a_command_without_a_table_takes_one_that_can_be_read(folder):
    path = linked(folder)
    lines = cli("tables", path)[0].splitlines()
    own = [line for line in lines if "\t" not in line]
    if own:
        assert cli("export", path)[0] == cli("export", path, own[0])[0]
    else:
        _, err = cli("export", path, ok=False)
        assert "Error - 3078 - " in err, err


if __name__ == "__main__":
    run_cases(globals())
