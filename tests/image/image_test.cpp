#include <gtest/gtest.h>
#include <sys/stat.h>

#include "image/MemoryMap.h"
#include "settings/LocalFile.h"
#include "settings/StoredSettings.h"
#include "support/FakeSystem.h"
#include "support/ScratchFolder.h"
#include "text/Text.h"

namespace corvane::tests {

const std::string kData = ":0400000001020304F2\n", kEnd = ":00000001FF\n";
const std::string kSound = ":020000040000FA\n" + kData + ":0400100005060708D2\n:020000040001F9\n" + kData + kEnd;

struct ImageTest : ::testing::Test {
    Image image(const std::string& content) { return {"/f/x.hex", content, digest}; }

    std::string found(const std::string& content, std::size_t most = 100) {
        return joined(findingLines(image(content).report().findings, most), "; ");
    }

    fakes::FakeDigest digest;
    fakes::ScratchFolder folder;
    Choices choices;
};

TEST_F(ImageTest, KeepsWhatWasReadWhateverBecomesOfTheFile) {
    const std::string content = "[INFO]\r\nPGM=R\xE9\r\nVER=V1\r\nBUD=a\\nb\r\n" + kData + "\r\n :x\r\n:junk";
    const auto path = folder.file("r\xC3\xA9.hex", content);
    const auto loaded = loadImage(path, digest).image.value();
    const Image copy = loaded;
    std::filesystem::remove(path);
    EXPECT_EQ(copy.path() + "|" + copy.name(), path + "|r\xC3\xA9.hex");
    EXPECT_EQ(copy.bytes(), content);
    EXPECT_EQ(copy.sha256(), digest.sha256(content));
    EXPECT_EQ(copy.info().description(), "R\xE9 V1(a\r\nb)");
    EXPECT_EQ(copy.records(), (std::vector<std::string_view>{":0400000001020304F2", ":junk"}));
    EXPECT_EQ(image("[INFO]\nVER=V2\n" + kEnd).info().description(), " ()");  // no program, so no version
    EXPECT_EQ(copy.isNone() + 2 * Image().isNone(), 2);
}

TEST_F(ImageTest, SaysWhyAFileIsNone) {
    const auto pipe = folder.at("pipe"), locked = folder.file("locked", kSound);
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    ASSERT_EQ(chmod(locked.c_str(), 0), 0);
    const std::pair<std::string, std::string> cases[] = {
        {"", "cannot be read: No such file or directory"},
        {folder.at("none"), "cannot be read: No such file or directory"},
        {folder.path(), "is a folder"},
        {pipe, "is no ordinary file"},
        {"/proc/self/mem", "cannot be read: Input/output error"},
        {locked, "cannot be read: Permission denied"},
    };
    for (const auto& [path, reason] : cases) {
        if (path == locked && geteuid() == 0) continue;  // nothing is locked for root
        EXPECT_FALSE(loadImage(path, digest).image) << path;
        EXPECT_EQ(loadImage(path, digest).problem.words, reason);
    }
}

TEST_F(ImageTest, HasALimitThatASettingRaises) {
    fakes::FakeSettingsStore settings;
    const auto loads = [&](const char* limit) {
        settings.values["Corvane/Update/ImageLimit"] = limit;
        StoredSettings(settings).load(choices);
        return LoadHexInfo(choices, folder.at("x.hex"), digest) ? "" : choices.refusal.problem.words;
    };
    folder.file("x.hex", kSound);
    std::filesystem::resize_file(folder.at("x.hex"), (64 << 20) + 1);
    for (const auto* limit : {"", "none", "0", "-3"}) EXPECT_EQ(loads(limit), "is larger than 64 MiB");
    EXPECT_EQ(loads("65"), "");
    EXPECT_EQ(loads("1"), "is larger than 1 MiB");
}

TEST_F(ImageTest, OfTheOperatorsFileIsReadAgainForARun) {
    const auto file = folder.file("x.hex", "[INFO]\nPGM=P\n" + kSound);
    EXPECT_TRUE(LoadHexInfo(choices, file, digest));
    EXPECT_EQ(choices.programLabel() + choices.imageProblem.words, "P");
    const auto reloaded = [&] {
        reloadLocalFile(choices, digest);
        return choices.programLabel() + "|" + choices.imageProblem.words;
    };
    folder.file("x.hex", "[INFO]\nPGM=Q\n" + kSound);
    EXPECT_EQ(reloaded(), "P|");  // not what is to be installed
    choices.useFile = true;
    EXPECT_EQ(reloaded(), "Q|");
    folder.file("x.hex", "[INFO]\nPGM=R\n");
    EXPECT_EQ(reloaded(), "Q|holds no Intel HEX record");  // the choice stays as it was shown
    std::filesystem::remove(file);
    EXPECT_EQ(reloaded(), "Q|cannot be read: No such file or directory");
    choices.imageProblem = {};
    EXPECT_FALSE(LoadHexInfo(choices, folder.file("c", " " + kEnd), digest));
    EXPECT_EQ(choices.programLabel() + choices.imageProblem.words + "|" + choices.refusal.problem.words,
              "Q|holds no Intel HEX record");  // the good one stays
    choices = {};
    EXPECT_FALSE(LoadHexInfo(choices, folder.at("c"), digest));
    EXPECT_EQ(choices.programLabel() + choices.imageProblem.words, "Invalid File Format!!holds no Intel HEX record");
}

TEST_F(ImageTest, HoldsAllItsRecordsAndStoresTheFirst32768) {
    std::string many;
    for (int i = 0; i < 32770; ++i) many += ":00000001FF\n";
    EXPECT_EQ(image(many).records().size(), 32768U);
    EXPECT_EQ(image(many).report().records, 32770U);
    EXPECT_EQ(image(many).emptiness().words + image(kData).emptiness().words, "holds no data");
}

TEST_F(ImageTest, FillsMemory) {
    const auto sound = image(kSound);
    const auto& report = sound.report();
    EXPECT_EQ(report.records, 6U);
    EXPECT_EQ(report.bytes, 12U);
    EXPECT_EQ(memoryMapOf(image(kSound))->words(),
              "12 bytes in 3 segments: 0x00000 to 0x00003, 4 bytes; a gap of 12 bytes; 0x00010 to 0x00013, 4 bytes; "
              "a gap of 65516 bytes; 0x10000 to 0x10003, 4 bytes.");
    std::string scattered;
    for (int i = 10; i < 50; ++i) scattered += ":01" + std::to_string(i) + "0000AA00\n";
    const auto words = memoryMapOf(image(scattered))->words();
    EXPECT_TRUE(words.starts_with("40 bytes in 40 segments: 0x01000 to 0x01000, 1 byte; a gap")) << words;
    EXPECT_TRUE(words.ends_with("; and more up to 0x04900.")) << words;
    EXPECT_EQ(image(":0400040005060708DE\n" + kData).report().segments.size(), 1U);
    EXPECT_EQ(memoryMapOf(image(":0400040005060708DE\n" + kData))->words(),
              "8 bytes in 1 segment: 0x00000 to 0x00007, 8 bytes.");
    EXPECT_FALSE(memoryMapOf(image(kEnd)));
}

TEST_F(ImageTest, HasTheseFindings) {
    const std::pair<std::string, std::string> cases[] = {
        {kSound, ""},
        {kData + ":0400000500000020D7\n:00000001FF", ""},
        {"", "the file holds no data; the file has no end record"},
        {kData, "the file has no end record"},
        {":0400000001020304F3\n" + kEnd, "line 1 has a wrong checksum"},
        {"x\n" + kData + ":04001000050607\n" + kEnd, "line 3 is cut off: fewer bytes than its length says"},
        {kData + ":0400100005060708D200\n" + kEnd, "line 2 has more bytes than its length says"},
        {kData + ":04001000050607zzD2\n:\n" + kEnd,
         "line 2 holds a character that is no hexadecimal digit; line 3 is cut off: fewer bytes than its length says"},
        {kData + ":0400040001020304EE\n:020002000506F1\n" + kEnd, "line 3 writes to 0x00002 again, as line 1 did"},
        {":0400100005060708D2\n:04000E0001020304E4\n" + kEnd, "line 2 writes to 0x00010 again, as line 1 did"},
        {kData + kData + kEnd,
         "line 2 is a second record at address 0: the one in line 1 is never sent; line 2 writes to 0x00000 again, as "
         "line 1 did"},
        {kData + ":020000021000EC\n" + kEnd,
         "line 2 is an extended segment record: the record at address 0 is sent late, to another place"},
        {kData + kEnd + ":0400100005060708D2\n" + kEnd,
         "line 3 stands behind the end record; line 4 is a second end record"},
        {kData + ":0100000400FB\n:00000007F9\n" + kEnd,
         "line 2 is an address record of a wrong length; line 3 has the unknown type 7"},
        {"\xEF\xBB\xBF" + kData + " :0400100005060708D2\n" + kData + kEnd,
         "line 1 holds a record that does not begin the line, so it is never sent; "
         "line 2 holds a record that does not begin the line, so it is never sent"},
        {":04FFFE0001020304F5\n" + kEnd, "line 1 runs past the end of its 64 KiB segment"},
    };
    for (const auto& [content, wanted] : cases) EXPECT_EQ(found(content), wanted) << content;
    EXPECT_EQ(found(kData + ":\n:\n:\n" + kEnd, 1), "line 2 is cut off: fewer bytes than its length says; and 2 more");
}

}  // namespace corvane::tests
