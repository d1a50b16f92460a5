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

# What each folder of src/ may include beside itself: what stands below it.
BELOW = {
    "text": [],
    "platform": ["text"],
    "platform/linux": ["platform", "text"],
    "hid": ["platform", "text", "vellio/vellio.h"],
    "ports": ["hid", "platform", "text"],
    "protocol": ["ports", "platform", "text"],
    "ftp": ["platform", "text"],
    "app": ["protocol", "ftp", "ports", "hid", "platform", "text"],
    "console": ["app", "protocol", "ftp", "ports", "hid", "platform", "platform/linux", "text"],
    "window": ["app", "protocol", "ftp", "ports", "hid", "platform", "platform/linux", "text"],
    "models": ["text"],
    "bench": ["models", "text"],
    "vellio": ["text"],
}

# These folders are C++ and its standard library, so that they run on any system.
PURE = ["text", "platform", "hid", "ports", "protocol", "ftp", "app", "console", "models"]
SYSTEM_HEADERS_IN = {"console/main.cpp"}
CLOCKS_IN = ["platform/linux", "bench", "vellio"]
CLOCKS = re.compile(
    r"\b(sleep_for|sleep_until|usleep|nanosleep|clock_nanosleep|clock_gettime|gettimeofday|timerfd_create"
    r"|std::chrono|QElapsedTimer|QDeadlineTimer|currentDateTime|currentMSecsSinceEpoch|currentTime"
    r"|QThread::m?sleep|QTest::qWait|QTest::qSleep)\b|(?<![\w.:>])(sleep|time|clock)\s*\(")
THREADS = re.compile(r"\bstd::(thread|jthread|mutex|atomic|async)\b|\bpthread_create\b|\bQThread\b|\bthread_local\b")
STANDARD_HEADER = re.compile(r"^[a-z_0-9]+$")      # <vector>, <cstdint>; <unistd.h>, <QString> are none


def folder_of(relative):
    """The longest known folder that a path below src/ lies in."""
    parts = relative.split("/")
    for count in range(len(parts) - 1, 0, -1):
        if "/".join(parts[:count]) in BELOW:
            return "/".join(parts[:count])
    return None


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
            if target is None or not (target == folder or target in BELOW[folder] or name in BELOW[folder]):
                yield number, "includes %s, which does not stand below %s/" % (name, folder)
        elif folder in PURE and relative not in SYSTEM_HEADERS_IN and not STANDARD_HEADER.match(name):
            yield number, "includes <%s>: %s/ is the standard library alone" % (name, folder)


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
        if folder not in CLOCKS_IN and CLOCKS.search(row):
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


def sources(folder):
    return sorted(path for path in folder.rglob("*") if path.suffix in (".h", ".cpp") and path.is_file())


def main(root):
    breaches = 0
    for name, check in (("src", check_source), ("tests", lambda _, text: check_test(text))):
        for path in sources(root / name):
            relative = path.relative_to(root / name).as_posix()
            for line, words in check(relative, path.read_text(encoding="utf-8")):
                print("%s/%s:%d: %s" % (name, relative, line, words))
                breaches += 1
    return 1 if breaches else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parent.parent)))
