#include <filesystem>
#include <stdexcept>

#include "ConsoleBench.h"
#include "text/Text.h"

namespace corvane::tests {

using Words = std::vector<std::string>;

struct Operation;

/// What goes wrong, and what the operator reads then, line by line ("..." stands for lines between); "$" is the
/// program's folder.
struct Way {
    Words words;
    int status;
    std::string sentences;
    void (*setUp)(Operation& it) = [](Operation&) {};
    const char* last = "";  ///< of the log
};

/// A site and a Download folder with one image, a device that is well, and somebody who updates it.
struct Operation : ConsoleTest {
    Operation() {
        image();
        offer("/f/a.hex\n");
        serve("", "listing");
        serve("/f/a.hex", fakes::kImage);
        write("Download/a.hex", fakes::kImage);
    }

    void offer(const std::string& file, const std::string& head = "") {
        const auto list = head + "[PGM_A]\nPRODUCT=TARN\nVERSION=V9\nDESC=\nFILE=" + file;
        serve("/firmware/firmware.inf", list);
        write("firmware.inf", list);
    }
    void serve(const std::string& path, const std::string& content) {
        reader.answers["ftp://upd:@host" + path].content = content;
    }
    void remove(const std::string& name) { std::filesystem::remove_all(folder.folder.at(name)); }
    void device(std::string_view fault, models::DeviceOptions options = {}) {
        serial.map.entries.clear();
        if (!fault.empty()) options.faults.add(fault);
        plug(std::move(options));
    }
    void interruptAfter(std::int64_t ms) {
        runtime.at(runtime.ms() + ms, [this] { interrupt(); });
    }
    /// Puts a file there that nobody can read at its start.
    void spoil(const std::string& name) {
        remove(name);
        std::filesystem::create_symlink("/proc/self/mem", folder.folder.at(name));
    }
    /// Somebody is there, and thinks for so long before each answer.
    void type(std::deque<std::string> lines, std::int64_t ms = 0) {
        terminal.there = true;
        terminal.lines = std::move(lines);
        terminal.onRead = [this, ms] {
            for (const auto end = runtime.ms() + ms; runtime.ms() < end; runtime.DoEvents()) runtime.Sleep(100);
        };
    }
    void unplugAt(const std::string& logged) {
        type({"n"});
        when(logged, [this] { devices.back()->unplug(); });
    }
    void throwAt(const std::string& logged) {
        when(logged, [] { throw std::runtime_error("no memory"); });
    }
};

/// Every end that is not "updated" has its own cause, and the console says it.
class WaysToFail : public Operation, public ::testing::WithParamInterface<Way> {};

TEST_P(WaysToFail, IsToldWithItsCause) {
    const auto& way = GetParam();
    auto words = way.words;
    for (auto& word : words) word = replaceAll(word, "$", folder.path());
    device("");
    way.setUp(*this);
    EXPECT_EQ(run(words), way.status);
    const auto sum = replaceAll(way.sentences, "$SUM", digest.sha256(fakes::kImage));
    const auto wanted = replaceAll(replaceAll(sum, "$DATA", folder.dataPath()), "$", folder.path());
    for (std::size_t from = 0, to = 0; to != std::string::npos; from = to + 5) {
        to = wanted.find("\n...\n", from);
        const auto part = "\n" + wanted.substr(from, to == std::string::npos ? to : to - from);
        EXPECT_TRUE(says(replaceAll(part, "\n", "\ncorvane-cli: ").substr(1))) << part << "\nbut: " << err.text;
    }
    EXPECT_TRUE(out.text.ends_with(way.last)) << out.text;
    const bool isToldWhatToDo =
        says("It is safe to unplug the device.\n") || says("Better leave the device plugged in");
    EXPECT_TRUE(way.status != 5 || isToldWhatToDo != says("COM1 was lost"));
}

using It = Operation;
const Words kOnLine = {"update", "--server", "host", "--user", "upd"},
            kOnLineYes = {"update", "--server", "host", "--user", "upd", "--yes"},
            kNewer = {"update", "--server", "host", "--user", "upd", "--yes", "--self-update"},
            kSelect = {"update", "--server", "host", "--user", "upd", "--yes", "--select", "PGM X"},
            kFolder = {"update", "--offline", "--yes"}, kLocal = {"update", "--file", "$/local.hex"},
            kLocalYes = {"update", "--file", "$/local.hex", "--yes"},
            kVerified = {"update", "--file", "$/local.hex", "--yes", "--verify"},
            kElsewhere = {"update", "--file", "$/local.hex", "--port", "COM9"};
const std::string kBrokeOff = "broke off: the server did not answer with data.",
                  kLost = "COM1 was lost: it was unplugged, or its cable came loose.",
                  kWaits = "The device waits in its boot loader. ",
                  kMove = "\n...\n1. Move the old one away, or make it one that this user may replace.",
                  kNone = kWaits + "It has no working firmware yet.\n";
constexpr char kEmpty[] = "[INFO]\nPGM=TARN\n:00000001FF\n", kNewerOne[] = "[Corvane]\nVersion=Z\n",
               kOther[] = "[PGM X]\nPRODUCT=TARN\nVERSION=V1\nDESC=\nFILE=x\n";

const Way kWays[] = {
    {kOnLineYes, 4, "The login failed: the dialogue with the server " + kBrokeOff, [](It& it) { it.serve("", ""); },
     "Login Server... < NG\n"},
    {kOnLineYes, 1, "The run was cancelled.",
     [](It& it) { it.reader.answers["ftp://upd:@host"].ends = false, it.interruptAfter(500); }},
    {kOnLineYes, 4, "firmware.inf could not be fetched: the transfer " + kBrokeOff,
     [](It& it) { it.serve("/firmware/firmware.inf", ""); }, "Downloading File... < NG\n"},
    {kOnLineYes, 4,
     "firmware.inf could not be fetched: it could not be stored: /x: No space left on device.\n...\n"
     "1. Make room on the disk, or make the folder one that this user may write to.",
     [](It& it) {
         it.reader.answers["ftp://upd:@host/firmware/firmware.inf"] = {
             .content = "", .failure = {ReadFailure::Kind::storage, "/x: No space left on device"}};
     }},
    {kOnLineYes, 4,
     "firmware.inf could not be fetched: the old $/firmware.inf cannot be replaced: Is a directory." + kMove,
     [](It& it) { it.remove("firmware.inf"), it.folder.folder.file("firmware.inf/x", ""); }},
    {kOnLine, 4,
     "The session with the site was closed while a question stood open, since nothing was asked of the site for "
     "three minutes.",
     [](It& it) { it.type({"y"}, 190000); }},
    {kNewer, 4, "The newer program does not start: Exec format error.",
     [](It& it) {
         it.offer("/f/a.hex\n", kNewerOne), it.serve("/firmware/utility/corvane.exe", "x");
         it.launcher.failure = "Exec format error";
     }},
    {kNewer, 0, "The newer program could not be fetched: the transfer " + kBrokeOff + " This one went on.",
     [](It& it) { it.offer("/f/a.hex\n", kNewerOne); }},
    {kOnLineYes, 1, "The site's firmware.inf offers no image.",
     [](It& it) { it.serve("/firmware/firmware.inf", "[Corvane]\nVersion=A\n"); }},
    {kSelect, 4, "firmware.inf does not say what the chosen image is.", [](It& it) { it.offer("/f/a.hex\n", kOther); },
     "No new version in server!!\nFirmware download fail!!(Not define)\n"},
    {kFolder, 1, "No image is on offer: there is no firmware.inf yet.", [](It& it) { it.remove("firmware.inf"); },
     "Firmware file(s) not found !!!\n"},
    {kFolder, 1, "No image is on offer: none of those in firmware.inf lies in the Download folder.",
     [](It& it) { it.remove("Download/a.hex"); }},
    {kOnLine, 1, "No image was chosen.", [](It& it) { it.type({"n"}); }, "\n\nCancel Update!!!\n"},
    {kLocalYes, 1, "None of the images is for this device.", [](It& it) { it.image("[INFO]\nPGM=ZETA\n:00\n"); },
     "Firmware not found!!!\n"},

    {kOnLineYes, 4, "The image could not be had: the transfer " + kBrokeOff, [](It& it) { it.serve("/f/a.hex", ""); }},
    {kOnLineYes, 4, "The image could not be had: the old $/Download/a.hex cannot be replaced: it is a folder." + kMove,
     [](It& it) { it.remove("Download/a.hex"), it.folder.folder.file("Download/a.hex/x", ""); }},
    {kFolder, 4, "The image could not be had: the site's name for it, \"x\\a.hex\", may be no file's here.",
     [](It& it) { it.offer("x\\a.hex\n"); }, "\n\nFirmware download fail!!\n"},
    {kFolder, 4, "The image is not the one that firmware.inf means: its SHA-256 is $SUM, but firmware.inf says 00.",
     [](It& it) { it.offer("/f/a.hex\nSHA256=00\n"); }},
    {kFolder, 4, "The image is not there any more: a.hex does not lie in the Download folder.",
     [](It& it) { it.when("\n\n[FTP Site]\n", [&it] { it.remove("Download/a.hex"); }); }},
    {kFolder, 4, "The image a.hex cannot be read: Input/output error.", [](It& it) { it.spoil("Download/a.hex"); }},
    {kOnLineYes, 4, "The image a.hex holds no data.", [](It& it) { it.serve("/f/a.hex", kEmpty); }},
    {kLocalYes, 1, "$/local.hex: Invalid File Format!! The file cannot be read: Input/output error.",
     [](It& it) { it.spoil("local.hex"); }},
    {kLocal, 1, "The image does not add up and was not installed.",
     [](It& it) {
         it.image("[INFO]\nPGM=TARN\n:0400000001020304F2\n"), it.type({"y", "n"});
     }},

    {kLocalYes, 3, "There is no port to look for a device at.", [](It& it) { it.serial.map.entries.clear(); }},
    {kElsewhere, 3, "There is no port to look for a device at: COM9 is not there."},
    {kLocalYes, 3, "No port could be opened.", [](It& it) { it.serial.control.markBusy(1); }},
    {kLocalYes, 3, "No device was found; nothing was changed.\nNo device answered on any port.",
     [](It& it) { it.device("", {.kind = models::Kind::silent}); }},
    {kLocalYes, 3,
     "A device waits in its boot loader; nothing was changed.\nCOM1 answers with the prompt of a boot loader.",
     [](It& it) { it.device("", {.startsInBoot = true}); },
     ", In ISP Mode!!\nCan not found any device on comm port!!\n"},
    {kLocal, 1, "The device was not changed.\nNo image was chosen.\n" + kLost,
     [](It& it) { it.unplugAt("[Local Site]\n"); }},
    {kLocalYes, 5, "The device wants a password; set CORVANE_DEVICE_PASSWORD.",
     [](It& it) { it.device("", {.password = "wing"}); }},
    {kLocalYes, 5,
     "The device wants a password before it switches into its boot loader, and was given none that it takes.",
     [](It& it) { it.device("", {.password = "wing"}), it.devicePassword = "wrong"; }},
    {kLocalYes, 5, "The device was not changed.\nThe device did not agree to switch into its boot loader.",
     [](It& it) { it.device("refuse@1f=07"); }, "< NG\nCan't enter ISP Mode!!\n"},
    {kLocalYes, 5,
     "The device may wait in its boot loader. Its firmware is still there.\n"
     "The device was asked to switch into its boot loader and did not confirm it.",
     [](It& it) { it.device("drop@2"); }},
    {kLocalYes, 5,
     kWaits + "Its firmware is still there.\nThe device agreed to switch, but its boot loader does not answer at the "
              "rates tried.",
     [](It& it) { it.device("boot-deaf=9000"); }, "< OK\nCan't enter ISP Mode!!\n"},
    {kLocalYes, 5, kLost, [](It& it) { it.device("unplug-request@1f"); }},
    {kLocalYes, 5, kNone + kLost, [](It& it) { it.device("unplug@1"); }},
    {kLocalYes, 5, kWaits + "Its firmware may be gone.\nErasing failed three times.",
     [](It& it) { it.device("erase-nakx*"); }},
    {kLocalYes, 5, kNone + "Programming failed in three tries.", [](It& it) { it.device("nak@2x*"); }},
    {kVerified, 6,
     "The device is programmed and was not heard of since.\nEvery record was acknowledged; then the device was told "
     "to restart, and nothing has answered since: COM1 was lost.",
     [](It& it) { it.unplugAt("Update Finish\n"); }},
    {kLocalYes, 4, "Something unexpected happened: no memory.", [](It& it) { it.throwAt("[Local Site]\n"); }},
    {kLocalYes, 5, "Something unexpected happened: no memory.", [](It& it) { it.throwAt("Programming..."); }},
    {kLocalYes, 0,
     "The journal $DATA/interrupted-runs could not be written (no folder can be made: $DATA: File exists): had the "
     "program or the "
     "computer failed meanwhile, the next start would not have known of this device.\nThe record "
     "$DATA/jobs.csv could not be written: no folder can be made: $DATA: File exists.",
     [](It& it) { it.folder.data.file("Corvane", "a file and no folder"); }},
};

INSTANTIATE_TEST_SUITE_P(, WaysToFail, ::testing::ValuesIn(kWays));

}  // namespace corvane::tests
