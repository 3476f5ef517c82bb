# SPDX-License-Identifier: BSD-3-Clause
"""What each package carries of the documents stands by itself: every link of a page leads to something that is in the same
package. And no page takes for granted what a minimal system has not: commands are given to root, not to sudo.

Usage: installed_documents_test.py BUILD SOURCES
"""
import os
import re
import subprocess
import sys
import tempfile

packages = {"daemon": "ipmib", "library": "libipmib", "development": "ipmib-dev"}


def texts(folder):
    for place, _, names in os.walk(folder):
        for name in names:
            path = os.path.join(place, name)
            try:
                with open(path, encoding="utf-8") as file:
                    yield path, file.read()
            except UnicodeDecodeError:
                pass  # a program


def anchors(page):
    """As the usual viewers make them of headings."""
    for heading in re.findall(r"^#+ (.*)$", page, re.M):
        yield re.sub(r"[^\w -]", "", heading.lower()).replace(" ", "-")


def faults_of(place, page):
    for link in re.findall(r"\]\(([^)\s]+)\)", page):
        if re.match(r"[a-z]+:", link):
            continue
        name, _, anchor = link.partition("#")
        target = os.path.join(os.path.dirname(place), name) if name else place
        if not os.path.exists(target):
            yield f"links to {link}, which is not in the package"
        elif anchor:
            with open(target, encoding="utf-8") as file:
                if anchor not in anchors(file.read()):
                    yield f"links to {link}, where there is no such heading"


def main(build, sources):
    faults, pages, links = [], 0, 0
    with tempfile.TemporaryDirectory() as work:
        for component, package in packages.items():
            # By itself, as it may be installed without the others.
            tree = os.path.join(work, package)
            subprocess.run(["cmake", "--install", build, "--prefix", tree, "--component", component], check=True,
                           stdout=subprocess.DEVNULL)
            for path, text in texts(tree):
                where = f"{package}: {os.path.relpath(path, tree)}"
                if path.endswith(".md"):
                    pages += 1
                    links += len(re.findall(r"\]\([^)\s]+\)", text))
                    faults += [f"{where} {fault}" for fault in faults_of(path, text)]
                if re.search(r"\bsudo(edit)?\b", text):
                    faults.append(f"{where} says sudo")
        for path, text in texts(os.path.join(sources, "packaging")):
            # A script may use it where it is there.
            if re.search(r"echo .*\bsudo\b|^#.*\bsudo\b", text, re.M):
                faults.append(f"{os.path.relpath(path, sources)} says sudo")
    print("\n".join(faults))
    print(f"{pages} pages, {links} links")
    return 0 if pages > 20 and links > 30 and not faults else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
