"""Gives tests/docs/check_documents.py small pages that show what is so, and some that do not.

usage: check_checker.py ROOT
"""

import subprocess
import sys
import tempfile
from pathlib import Path

CHECKER = Path(sys.argv[1]).resolve() / "tests" / "docs" / "check_documents.py"


def block(language, content):
    return f"```{language}\n{content}\n```\n"


RIGHT = {
    "shown lines": block("sh", "printf 'a\\nb 1.0001\\nc\\n'") + block("text", "b 1.0002\nc"),
    "times": block("sh", "echo time 7 s") + block("text", "time 3 s"),
    "seconds": block("sh", "echo done, 7 s: all, 8 s") + block("text", "done, 0.5 s: all, 3 s"),
    "a saved file": block("toml", "# build/saved.toml\nx = 1") + block("toml", "y = 2")
                    + block("sh", "grep -c = build/saved.toml") + block("text", "2"),
    "a table": block("sh", "echo '| a | 10 |'") + "| a | 12 |\n",
    "a link": "[this page](page.md), [elsewhere](https://example.org)\n",
    "text alone": block("text", "nothing has been run"),
}
WRONG = {
    "printed": block("sh", "echo b 1.1") + block("text", "b 1.0"),
    "exit 3": block("sh", "exit 3"),
    "exit 1": block("sh", "false | true; false; true"),
    "no rule": block("perl", "print 1"),
    "no command takes build/saved.toml": block("toml", "# build/saved.toml\nx = 1"),
    "lacks the row": block("sh", "echo '| a | 10 |'") + "| a | 20 |\n",
    "links to other.md": "[another page](other.md)\n",
    "names scripts/nothing": "`scripts/nothing`\n",
    "not complete": block("cpp", "int main()\n{"),
}


def check(page, folder):
    place = Path(folder, "page.md")
    place.write_text(page)
    done = subprocess.run([sys.executable, str(CHECKER), folder, folder, "c++", str(place)],
                          capture_output=True, text=True)
    return done.returncode, done.stdout + done.stderr


def main():
    failures = []
    for name, page in RIGHT.items():
        with tempfile.TemporaryDirectory() as folder:
            code, said = check(page, folder)
            if code != 0:
                failures.append(f"{name}: refused\n{said}")
    for sentence, page in WRONG.items():
        with tempfile.TemporaryDirectory() as folder:
            code, said = check(page, folder)
            if code == 0 or sentence not in said:
                failures.append(f"{sentence}: exit {code}\n{said}")
    print("\n".join(failures) or f"{len(RIGHT)} pages pass, {len(WRONG)} are refused for what is wrong with them")
    return 1 if failures else 0


sys.exit(main())
