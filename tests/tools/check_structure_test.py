#!/usr/bin/python3
"""Tests of tools/check_structure.py on small sources, each with one breach or none."""

import pathlib
import sys
import unittest

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).parent.parent.parent / "tools"))

import check_structure  # noqa: E402


def words(relative, text):
    return [found for _, found in check_structure.check_source(relative, text)]


def body(lines):
    return "    a();\n" * lines


class Includes(unittest.TestCase):
    def test_down_and_across(self):
        for relative, include in (("run/a.cpp", "face/Log.h"), ("hid/a.h", "vellio/vellio.h"), ("app/a.h", "app/b.h"),
                                  ("window/a.cpp", "platform/linux/events/LinuxRuntime.h"), ("text/a.h", "text/b.h")):
            self.assertEqual(words(relative, '#include "%s"\n' % include), [], relative)

    def test_up_and_sideways(self):
        for relative, include in (("protocol/a.cpp", "run/UpdateRun.h"), ("hid/a.h", "vellio/Transport.h"),
                                  ("hid/a.h", "ports/clsMSComm.h"), ("app/a.h", "platform/linux/events/LinuxRuntime.h"),
                                  ("models/a.h", "platform/Runtime.h"), ("console/a.h", "window/a.h"),
                                  ("text/a.h", "b.h"), ("ftp/a.h", "face/Log.h")):
            self.assertEqual(len(words(relative, '#include "%s"\n' % include)), 1, relative + " " + include)

    def test_standard_library_alone(self):
        self.assertEqual(words("app/a.cpp", "#include <vector>\n#include <cstdint>\n"), [])
        for header in ("unistd.h", "QString", "sys/epoll.h", "curl/curl.h", "stdint.h"):
            self.assertEqual(len(words("app/a.cpp", "#include <%s>\n" % header)), 1, header)
        self.assertEqual(words("window/a.cpp", "#include <QString>\n"), [])
        for header in ("unistd.h", "csignal", "sys/prctl.h"):
            self.assertEqual(len(words("window/a.cpp", "#include <%s>\n" % header)), 1, header)
        self.assertEqual(words("platform/linux/a.cpp", "#include <unistd.h>\n"), [])

    def test_unknown_folder(self):
        self.assertEqual(len(words("misc/a.cpp", "")), 1)


class Lengths(unittest.TestCase):
    def test_functions(self):
        heads = ("void f() {\n", "int A::f(int x) const noexcept {\n", "A::A(int b)\n    : b_(b), c_{1} {\n",
                 "class A {\npublic:\n    void f() override {\n", "namespace x {\ntemplate <class T>\nT f(T (*g)(int)) {\n")
        for head in heads:
            end = "}\n" * head.count("{\n")
            self.assertEqual(words("app/a.cpp", head + body(78) + end), [], head)
            self.assertEqual(len(words("app/a.cpp", head + body(80) + end)), 1, head)

    def test_long_things_that_are_no_functions(self):
        for head, end in (("class A {\n", "};\n"), ("namespace x {\n", "}\n"), ("const int kAll[] = {\n", "};\n"),
                          ("struct B : public A<int> {\n", "};\n"), ("enum class E : int {\n", "};\n")):
            self.assertEqual(words("app/a.cpp", head + "    1,\n" * 100 + end), [], head)

    def test_braces_in_texts_and_comments(self):
        text = 'void f() {\n    g("}{", \'{\');  // {\n    /* {{ */ h(R"({{{)");\n}\n' + "// x\n" * 100
        self.assertEqual(words("app/a.cpp", text), [])

    def test_files(self):
        self.assertEqual(words("app/a.cpp", "// x\n" * 500), [])
        self.assertEqual(len(words("app/a.cpp", "// x\n" * 501)), 1)
        self.assertEqual(len(check_structure.check_test("// x\n" * 501)), 1)


class Words(unittest.TestCase):
    def test_clocks(self):
        for code in ("std::this_thread::sleep_for(x);", "auto t = std::chrono::steady_clock::now();", "time(nullptr);",
                     "clock_gettime(a, b);", "QElapsedTimer t;"):
            self.assertEqual(len(words("app/a.cpp", code + "\n")), 1, code)
            self.assertEqual(words("platform/linux/a.cpp", code + "\n"), [], code)
        for code in ("runtime.Sleep(50);", "// sleep(1) is wrong here", "device.time(1);", "downtime(3);", "f(\"time(\");"):
            self.assertEqual(words("app/a.cpp", code + "\n"), [], code)

    def test_threads(self):
        self.assertEqual(len(words("bench/a.cpp", "std::thread t;\n")), 1)

    def test_waiting_tests(self):
        self.assertEqual(len(check_structure.check_test("QTest::qWait(100);\n")), 1)
        self.assertEqual(check_structure.check_test("runtime.Sleep(100);\n"), [])


if __name__ == "__main__":
    unittest.main()
