#!/usr/bin/python3
"""Tests of tools/check_structure.py on small sources, each with one breach or none."""

import pathlib
import sys
import unittest

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).parent.parent.parent / "tools"))

import check_structure  # noqa: E402

# The file, what may stand in it, and what may not.
INCLUDES = (
    ("run/a.cpp", '"face/Log.h"', '"console/a.h"'), ("hid/a.h", '"vellio/vellio.h"', '"vellio/Transport.h"'),
    ("app/a.h", '"app/b.h"', '"platform/linux/events/LinuxRuntime.h"'), ("text/a.h", '"text/b.h"', '"b.h"'),
    ("protocol/a.cpp", "<cstdint>", '"run/UpdateRun.h"'), ("app/a.cpp", "<map>", "<sys/epoll.h>"),
    ("app/a.cpp", "<cstdint>", "<QString>"), ("app/a.cpp", "<deque>", "<stdint.h>"), ("window/a.cpp", "<QString>", "<csignal>"))
CODE = (
    ("runtime.Sleep(50);", "std::this_thread::sleep_for(x);"), ("// sleep(1) is wrong here", "time(nullptr);"),
    ("device.time(1);", "auto t = std::chrono::steady_clock::now();"), ("downtime(3);", "clock_gettime(a, b);"),
    ('f("time(");', "QElapsedTimer t;"), ("int thread;", "std::thread t;"))
FUNCTIONS = ("void f() {\n", "int A::f(int x) const noexcept {\n", "A::A(int b)\n    : b_(b), c_{1} {\n",
             "class A {\npublic:\n    void f() override {\n", "namespace x {\ntemplate <class T>\nT f(T (*g)(int)) {\n")
OTHERS = (("class A {\n", "};\n"), ("namespace x {\n", "}\n"), ("const int kAll[] = {\n", "};\n"),
          ("struct B : public A<int> {\n", "};\n"), ("enum class E : int {\n", "};\n"))


class Structure(unittest.TestCase):
    def expect(self, breaches, relative, text):
        self.assertEqual(len(check_structure.check_source(relative, text)), breaches, relative + " " + text)

    def test_what_a_file_may_include(self):
        for relative, good, bad in INCLUDES:
            self.expect(0, relative, "#include %s\n" % good)
            self.expect(1, relative, "#include %s\n" % bad)
        self.expect(0, "platform/linux/a.cpp", "#include <unistd.h>\n")
        self.expect(1, "misc/a.cpp", "")  # a folder that nobody knows

    def test_clocks_and_threads(self):
        for good, bad in CODE:
            self.expect(0, "app/a.cpp", good + "\n")
            self.expect(1, "app/a.cpp", bad + "\n")
        self.expect(0, "platform/linux/a.cpp", "time(nullptr);\n")
        self.assertEqual(len(check_structure.check_test("QTest::qWait(100);\n")), 1)
        self.assertEqual(check_structure.check_test("runtime.Sleep(100);\n"), [])

    def test_lengths(self):
        for head in FUNCTIONS:
            for lines, breaches in ((78, 0), (80, 1)):
                self.expect(breaches, "app/a.cpp", head + "    a();\n" * lines + "}\n" * head.count("{\n"))
        for head, end in OTHERS:
            self.expect(0, "app/a.cpp", head + "    1,\n" * 100 + end)
        braces = 'void f() {\n    g("}{", \'{\');  // {\n    /* {{ */ h(R"({{{)");\n}\n'
        self.expect(0, "app/a.cpp", braces + "// x\n" * 100)
        for lines, breaches in ((500, 0), (501, 1)):
            self.expect(breaches, "app/a.cpp", "// x\n" * lines)
            self.assertEqual(len(check_structure.check_test("// x\n" * lines)), breaches)


if __name__ == "__main__":
    unittest.main()
