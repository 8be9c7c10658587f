"""Programs in the languages of the clients, made ready to run: README's first lines, and examples."""
import os
import re
import subprocess
import sys

from protocol_schema import ROOT

NODE_PACKAGES = os.path.join(ROOT, "clients", "node_modules")
WITH_NODE = os.path.join(ROOT, "scripts", "with-node")
HAS_NODE = os.path.isdir(NODE_PACKAGES)
LANGUAGES = ["python", "ts"] if HAS_NODE else ["python"]
_COMPILE = ["--strict", "--target", "es2022", "--module", "nodenext", "--lib", "es2023,esnext.disposable", "--types", "node",
            "--typeRoots", os.path.join(NODE_PACKAGES, "@types")]


def run(*command, **options):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, **{"timeout": 200, **options})


def readme_lines(language):
    with open(os.path.join(ROOT, "README.md"), encoding="utf-8") as file:
        return re.search(rf"^```{language}\n(.*?)^```", file.read(), re.M | re.S)[1]


def command(language, text, folder):
    """What runs this program; one in TypeScript is checked and compiled in the folder, whose node_modules it uses, else the tree's."""
    if language == "python":
        return [sys.executable, "-B", "-c", text]
    modules = os.path.join(folder, "node_modules")
    if not os.path.exists(modules):
        os.symlink(NODE_PACKAGES, modules)
    for name, content in (("package.json", '{"type": "module"}'), ("program.ts", text)):
        with open(os.path.join(folder, name), "w", encoding="utf-8") as file:
            file.write(content)
    compiled = run(WITH_NODE, os.path.join(NODE_PACKAGES, ".bin", "tsc"), *_COMPILE, "program.ts", cwd=folder)
    if compiled.returncode:
        raise AssertionError(compiled.stdout)
    return [WITH_NODE, "node", os.path.join(folder, "program.js")]
