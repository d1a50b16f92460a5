#!/usr/bin/python3
"""Holds the sources against the house rules: includes point down, functions and files stay short, and only the
folders that may do so sleep, read a clock, or use more than the standard library.

    tools/check_structure.py [ROOT]     prints one line for each breach; exit status 1 when there is one
"""

import pathlib
import re
import sys

LONGEST_FUNCTION = 80
LONGEST_FILE = 500

LARGEST_FOLDER = 30         # files

# These folders are C++ and its standard library, so that they run on any system.
PURE = ["text", "cable", "platform", "platform/files", "platform/serial", "image", "face", "trust", "settings", "hid", "ports", "protocol", "ftp", "site", "run",
        "app", "console", "window/presenter", "models"]
CLOCKS_IN = ["platform/linux", "bench", "vellio"]     # and the folders in them
# One header is included across: what the transport library exports, for whoever loads it by path.
ACROSS = {"hid": ["vellio/vellio.h"]}
CLOCKS = re.compile(
    r"\b(sleep_for|sleep_until|usleep|nanosleep|clock_nanosleep|clock_gettime|gettimeofday|timerfd_create"
    r"|std::chrono|QElapsedTimer|QDeadlineTimer|currentDateTime|currentMSecsSinceEpoch|currentTime"
    r"|QThread::m?sleep|QTest::qWait|QTest::qSleep)\b|(?<![\w.:>])(sleep|time|clock)\s*\(")
THREADS = re.compile(r"\bstd::(thread|jthread|mutex|atomic|async)\b|\bpthread_create\b|\bQThread\b|\bthread_local\b")
WINDOW_HEADER = re.compile(r"^(Q[A-Za-z]+|[a-z_0-9]+)$")
STANDARD_HEADER = re.compile(r"^[a-z_0-9]+$")      # <vector>, <cstdint>; <unistd.h>, <QString> are none


def linked(root):
    """What each folder of src/ may include beside itself: the folders whose libraries it links, as the build files say."""
    home, links = {}, {}
    for build in sorted((root / "src").rglob("CMakeLists.txt")):
        folder = build.parent.relative_to(root / "src").as_posix()
        if folder == ".":
            continue
        links.setdefault(folder, set())
        text = re.sub(r"#.*", "", build.read_text(encoding="utf-8"))
        for call, words in re.findall(r"\b(corvane_library|add_library|target_link_libraries)\s*\(([^)]*)\)", text):
            names = words.split()
            if call == "corvane_library":
                names = ["corvane_" + name for name in names]
            if call != "target_link_libraries":
                home.setdefault(names[0], folder)
            links[folder].update(name for name in names[1:] if name.startswith("corvane_"))

    def below(folder, seen):
        for name in links[folder]:
            if name in home and home[name] not in seen:
                seen.add(home[name])
                below(home[name], seen)
        return seen
    return {folder: below(folder, set()) for folder in links}


ROOT = pathlib.Path(__file__).parent.parent
BELOW = linked(ROOT)


def folder_of(relative):
    """The folder of src/ that a path lies in; nothing when no build file knows it."""
    folder = relative.rpartition("/")[0]
    return folder if folder in BELOW else None


def without_comments(text):
    """The same text, comments and the insides of literals blanked out, every line end kept."""
    pattern = re.compile(
        r'//[^\n]*|/\*.*?\*/|R"(?P<mark>[^(\s]*)\(.*?\)(?P=mark)"|"(?:\\.|[^"\\\n])*"|(?<![0-9A-Fa-f])\'(?:\\.|[^\'\\\n])*\'', re.S)

    def blank(match):
        kept = '""' if match.group(0)[0] in '"R\'' else ""
        return kept + "\n" * match.group(0).count("\n")
    return pattern.sub(blank, text)


def opens_function(head):
    """Whether the text between the last ; { } and a { is the head of a function."""
    head = re.sub(r"^\s*(?:public|private|protected)\s*:", "", head).strip()
    head = re.sub(r"^#.*$", "", head, flags=re.M).strip()
    if not head or re.match(r"(?:inline\s+)?namespace\b|extern\s*\"\"", head):
        return False
    if re.search(r"\b(class|struct|union|enum)\b[^()]*$", head) and not head.endswith(")"):
        return False
    if re.search(r"=\s*(\w+\s*)?$", head):
        return False
    return "(" in head


def functions(text):
    """(first line, last line) of each outermost function body in text without comments."""
    found, stack, start, line = [], [], 0, 1
    for at, character in enumerate(text):
        if character == "\n":
            line += 1
        elif character == "{":
            inside = any(kind for kind, _, _ in stack)
            is_initializer = re.search(r"[\w>]$", text[start:at]) and ":" in text[start:at]     # member_{1}
            stack.append((not inside and not is_initializer and opens_function(text[start:at]), line,
                          start if is_initializer else None))
            start = at + 1
        elif character == "}":
            is_function, first, resume = stack.pop() if stack else (False, line, None)
            if is_function:
                found.append((first, line))
            start = at + 1 if resume is None else resume
        elif character == ";":
            start = at + 1
    return found


def includes(text):
    return [(number, match.group(1), match.group(2)) for number, row in enumerate(text.splitlines(), 1)
            if (match := re.match(r'\s*#\s*include\s+([<"])([^>"]+)[>"]', row))]


def check_includes(relative, text):
    folder = folder_of(relative)
    for number, kind, name in includes(text):
        if kind == '"':
            target = folder_of(name)
            if target is None or not (target == folder or target in BELOW[folder] or name in ACROSS.get(folder, [])):
                yield number, "includes %s, which does not stand below %s/" % (name, folder)
        elif kind == "<" and folder in PURE and not STANDARD_HEADER.match(name):
            yield number, "includes <%s>: %s/ is the standard library alone" % (name, folder)
        elif kind == "<" and folder.startswith("window") and (name == "csignal" or not WINDOW_HEADER.match(name)):
            yield number, "includes <%s>: %s/ is Qt and the standard library alone" % (name, folder)


def check_lengths(text, code):
    lines = text.count("\n") + (not text.endswith("\n"))
    if lines > LONGEST_FILE:
        yield 1, "has %d lines, more than %d" % (lines, LONGEST_FILE)
    for first, last in functions(code):
        if last - first + 1 > LONGEST_FUNCTION:
            yield first, "has a function of %d lines, more than %d" % (last - first + 1, LONGEST_FUNCTION)


def check_words(relative, code):
    folder = folder_of(relative)
    for number, row in enumerate(code.splitlines(), 1):
        if not any(folder == place or folder.startswith(place + "/") for place in CLOCKS_IN) and CLOCKS.search(row):
            yield number, "sleeps or reads a clock"
        if THREADS.search(row):
            yield number, "uses threads: there is one"


def check_source(relative, text):
    """All breaches of one file below src/: (line, words)."""
    code = without_comments(text)
    if folder_of(relative) is None:
        return [(1, "lies in a folder that the rules do not know")]
    return [*check_includes(relative, text), *check_lengths(text, code), *check_words(relative, code)]


def check_test(text):
    code = without_comments(text)
    waits = [(number, "waits on the wall clock") for number, row in enumerate(code.splitlines(), 1)
             if re.search(r"\b(sleep_for|usleep|QTest::qWait|QTest::qSleep|QThread::m?sleep)\b", row)]
    return [*check_lengths(text, code), *waits]


def check_folders(root):
    for folder in ("src", *("src/" + name for name in sorted(BELOW))):
        count = sum(path.is_file() for path in (root / folder).iterdir())
        if count > LARGEST_FOLDER:
            yield "%s: holds %d files, more than %d" % (folder, count, LARGEST_FOLDER)


def sources(folder):
    return sorted(path for path in folder.rglob("*") if path.suffix in (".h", ".cpp") and path.is_file())


def main(root):
    breaches = 0
    for words in check_folders(root):
        print(words)
        breaches += 1
    for name, check in (("src", check_source), ("tests", lambda _, text: check_test(text))):
        for path in sources(root / name):
            relative = path.relative_to(root / name).as_posix()
            for line, words in check(relative, path.read_text(encoding="utf-8")):
                print("%s/%s:%d: %s" % (name, relative, line, words))
                breaches += 1
    return 1 if breaches else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ROOT)))
