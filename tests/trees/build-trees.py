#!/usr/bin/env python3
"""Builds the trees of trees.txt as real Windows modules: build-trees.py OUT_DIR [TREE...]

Each import is linked through an import library of its own, made from the importer's spelling alone before any module is
built, so that modules may import each other in loops. Needs Debian's mingw-w64 compilers.
"""
import concurrent.futures
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
TOOLS = {64: "x86_64-w64-mingw32", 32: "i686-w64-mingw32"}


def run(*command):
    subprocess.run([os.fsencode(part) if isinstance(part, str) else part for part in command], check=True)


def function_of(name: str) -> str:
    """The function that a module exports, told from its name, whatever the case."""
    return "visit_" + re.sub(r"[^a-z0-9]", "_", name.rsplit(".", 1)[0].lower())


class Module:
    def __init__(self, place: str, flags: list, imports: list):
        self.place = place
        self.name = place.rsplit("/", 1)[-1]
        self.bits = 32 if "32-bit" in flags else 64
        self.is_text = "text" in flags
        self.forwards = [flag.split(" ", 1)[1] for flag in flags if flag.startswith("forwards ")]
        self.data = [flag.split(" ", 1)[1] for flag in flags if flag.startswith("data ")]
        self.imports = imports


def parse(text: str):
    trees = {}
    for line in text.splitlines():
        if not line.strip() or line.startswith("#"):
            continue
        if line.startswith("tree "):
            name, *kind = line.split()[1:]
            trees[name] = modules = []
            western = kind == ["western"]
            continue
        head, _, rest = line.partition(":")
        if head == "copied":
            continue
        place, *flags = re.split(r" \[", head)
        module = Module(place, [flag.rstrip("]") for flag in flags], [one.strip() for one in rest.split(",") if one.strip()])
        module.code_page = "cp1252" if western else "utf-8"
        modules.append(module)
    return trees


class Builder:
    """Builds the modules of one tree."""

    def __init__(self, out: Path, name: str):
        self.target = out / name
        self.work = out / ".work" / name
        self.counter = 0
        self.work.mkdir(parents=True, exist_ok=True)

    def import_library(self, module: Module, spelled: str, function: str, symbol: str, delayed: bool) -> str:
        """@return the library through which the symbol becomes an import of the function from the spelled name"""
        self.counter += 1
        base = self.work / f"{self.counter}"
        alias = symbol if symbol == function else f"{symbol} == {function}"
        definition = f'LIBRARY "{spelled}"\nEXPORTS\n{alias}\n'
        base.with_suffix(".def").write_bytes(definition.encode(module.code_page))
        run(TOOLS[module.bits] + "-dlltool", "-d", f"{base}.def", "-y" if delayed else "-l", f"{base}.a",
            "--temp-prefix", f"{base}.t")
        return f"{base}.a"

    def build(self, module: Module):
        target = self.target / module.place
        target.parent.mkdir(parents=True, exist_ok=True)
        if module.is_text:
            target.write_text(f"This is {module.place} and no module.\n", encoding="utf-8")
            return
        called, touched, libraries, prepare = [], [], [], []
        own = function_of(module.name)
        for text in module.imports:
            if text.startswith("later "):
                name = text[6:]
                prepare.append(f'reached += visitLater(tell, "{name}", "{function_of(name)}");')
                continue
            delayed = text.startswith("delayed ")
            spelled, _, function = text.removeprefix("delayed ").partition("!")
            symbol = function = function or function_of(spelled)
            if function == own:
                symbol = "again_" + own  # a module that imports itself knows the function by two names
            (touched if "!" in text and not function.startswith("forwarded_by_") else called).append(symbol)
            libraries.append(self.import_library(module, spelled, function, symbol, delayed))
        prepare += [f'readBeside(tell, "{name}");' for name in module.data]
        sources = [HERE / "Library.c"]
        options = ["-shared"]
        if module.name.endswith(".exe"):
            sources.append(HERE / "Program.c")
            options = ["-lpsapi"]
        if prepare:
            sources.append(HERE / "Extras.c")
        if module.forwards:
            lent = "".join(f"forwarded_by_{module.name.rsplit('.', 1)[0]}={name.rsplit('.', 1)[0]}.{function_of(name)}\n"
                           for name in module.forwards)
            definition = self.work / f"{module.name}.forwards.def"
            definition.write_text(f"EXPORTS\n{own}\n{lent}")
            sources.append(definition)

        def applied(symbols):
            return "".join(f"X({symbol})" for symbol in symbols)

        run(TOOLS[module.bits] + "-gcc-posix", "-O1", "-s", "-Wall", "-Werror", "-static-libgcc", *map(str, sources),
            f'-DMODULE="{module.place}"', f"-DVISIT={own}", f"-DIMPORTS(X)={applied(called)}",
            f"-DTOUCHED(X)={applied(touched)}", f"-DPREPARE(tell)={''.join(prepare)}", *libraries, *options, "-o", str(target))


def main() -> int:
    out = Path(sys.argv[1]).resolve()
    trees = parse((HERE / "trees.txt").read_text(encoding="utf-8"))
    wanted = sys.argv[2:] or list(trees)
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        jobs = []
        for name in wanted:
            shutil.rmtree(out / name, ignore_errors=True)
            jobs.append(pool.submit(lambda name=name: [Builder.build(builder, module) for builder in [Builder(out, name)]
                                                       for module in trees[name]]))
        for job in jobs:
            job.result()
    shutil.rmtree(out / ".work")
    return 0


if __name__ == "__main__":
    sys.exit(main())
