#include <filesystem>
#include <stdexcept>

#include "ConsoleBench.h"
#include "text/Text.h"

namespace corvane {
namespace {

using Words = std::vector<std::string>;

class WaysToFail;

/// What goes wrong, what the operator reads then ("..." stands for lines between), and the log's last words; "$" is the
/// program's folder.
struct Way {
    Words words;
    int status;
    std::string sentences;
    std::function<void(WaysToFail&)> setUp = nullptr;
    const char* last = "";
};

/// Every end that is not "updated" has its own cause, and the console says it.
class WaysToFail : public ConsoleTest, public ::testing::WithParamInterface<Way> {
public:
    static std::vector<Way> atTheSite();
    static std::vector<Way> withoutAnImage();
    static std::vector<Way> atTheDevice();

protected:
    /// A site and a Download folder with one image, and a device that is well.
    WaysToFail() {
        device("");
        image();
        offer("/f/a.hex\n");
        serve("listing", "");
        serve(fakes::kImage);
    }

    void offer(const std::string& file, const std::string& head = "") {
        const auto list = head + "[PGM_A]\nPRODUCT=TARN\nVERSION=V9\nDESC=\nFILE=" + file;
        serve(list, "/firmware/firmware.inf");
        write("firmware.inf", list);
    }
    void serve(const std::string& content, const std::string& path = "/f/a.hex") {
        reader.answers["ftp://upd:@host" + path].content = content;
        if (path == "/f/a.hex") write("Download/a.hex", content);
    }
    void withdraw(const std::string& path) { reader.answers.erase("ftp://upd:@host" + path); }
    void remove(const std::string& name) { std::filesystem::remove_all(folder.folder.at(name)); }
    void device(std::string_view fault, models::DeviceOptions options = {}) {
        serial.map.entries.clear();
        if (!fault.empty()) options.faults.add(fault);
        plug(std::move(options));
    }
    void interruptAfter(std::int64_t ms) {
        runtime.at(runtime.ms() + ms, [this] { interrupt(); });
    }
    /// Puts a link in the place of a file; "/proc/self/mem" is one that nobody can read at its start.
    void replace(const std::string& name, const std::string& target = "/proc/self/mem") {
        remove(name);
        std::filesystem::create_symlink(target, folder.folder.at(name));
    }
    /// Somebody is there, and thinks for so long before each answer.
    void type(std::deque<std::string> lines, std::int64_t ms = 0) {
        terminal.there = true;
        terminal.lines = std::move(lines);
        terminal.onRead = [this, ms] {
            for (const auto end = runtime.ms() + ms; runtime.ms() < end; runtime.DoEvents()) runtime.Sleep(100);
        };
    }
};

TEST_P(WaysToFail, IsToldWithItsCause) {
    const auto& way = GetParam();
    auto words = way.words;
    for (auto& word : words) word = replaceAll(word, "$", folder.path());
    if (way.setUp) way.setUp(*this);
    EXPECT_EQ(run(words), way.status);
    auto wanted = replaceAll(way.sentences, "$SUM", digest.sha256(fakes::kImage));
    wanted = replaceAll(replaceAll(wanted, "$DATA", folder.dataPath()), "$", folder.path());
    std::string lines;
    for (const auto& line : split(wanted + "\n...", '\n')) {
        if (line != "...") {
            lines += "corvane-cli: " + line + "\n";
            continue;
        }
        EXPECT_TRUE(says(lines)) << "not: " << lines << "\nbut: " << err.text;
        lines.clear();
    }
    EXPECT_TRUE(out.text.ends_with(way.last)) << out.text;
    const bool isToldWhatToDo =
        says("It is safe to unplug the device.\n") || says("Better leave the device plugged in");
    EXPECT_TRUE(way.status != 5 || isToldWhatToDo != says("COM1 was lost"));
}

using T = WaysToFail;
const Words kOnLine = {"update", "--server", "host", "--user", "upd"},
            kOnLineYes = {"update", "--server", "host", "--user", "upd", "--yes"},
            kNewer = {"update", "--server", "host", "--user", "upd", "--yes", "--self-update"},
            kSelect = {"update", "--server", "host", "--user", "upd", "--yes", "--select", "PGM X"},
            kFolder = {"update", "--offline", "--yes"}, kLocal = {"update", "--file", "$/local.hex"},
            kLocalYes = {"update", "--file", "$/local.hex", "--yes"},
            kVerified = {"update", "--file", "$/local.hex", "--yes", "--verify"},
            kElsewhere = {"update", "--file", "$/local.hex", "--port", "COM9"};
const std::string kBrokeOff = "broke off: the server did not answer with data.";

std::vector<Way> WaysToFail::atTheSite() {
    const std::string newer = "[Corvane]\nVersion=Z\n", other = "[PGM X]\nPRODUCT=TARN\nVERSION=V1\nDESC=\nFILE=x\n";
    return {
        {kOnLineYes, 4, "The login failed: the dialogue with the server " + kBrokeOff, [](T& t) { t.withdraw(""); },
         "Login Server... < NG\n"},
        {kOnLineYes, 1, "The run was cancelled.",
         [](T& t) { t.reader.answers["ftp://upd:@host"].ends = false, t.interruptAfter(500); }},
        {kOnLineYes, 4, "firmware.inf could not be fetched: the transfer " + kBrokeOff,
         [](T& t) { t.withdraw("/firmware/firmware.inf"); }, "Downloading File... < NG\n"},
        {kOnLineYes, 4,
         "firmware.inf could not be fetched: it could not be stored: /x: No space left on device.\n...\n1. Make room "
         "on "
         "the disk, or make the folder one that this user may write to.",
         [](T& t) {
             t.reader.answers["ftp://upd:@host/firmware/firmware.inf"] = {
                 .content = "", .failure = {ReadFailure::Kind::storage, "/x: No space left on device"}};
         }},
        {kOnLineYes, 4,
         "firmware.inf could not be fetched: the old $/firmware.inf cannot be replaced: Is a directory.\n...\n"
         "1. Move the old one away, or make it one that this user may replace.",
         [](T& t) { t.remove("firmware.inf"), t.folder.folder.file("firmware.inf/x", ""); }},
        {kOnLine, 4,
         "The session with the site was closed while a question stood open, since nothing was asked of the site for "
         "three minutes.",
         [](T& t) { t.type({"y"}, 190000); }},
        {kNewer, 4, "The newer program does not start: Exec format error.",
         [newer](T& t) {
             t.offer("/f/a.hex\n", newer), t.serve("x", "/firmware/utility/corvane.exe");
             t.launcher.failure = "Exec format error";
         }},
        {kNewer, 0,
         "The newer program could not be fetched: the transfer broke off: the server did not answer with "
         "data. This one went on.",
         [newer](T& t) { t.offer("/f/a.hex\n", newer); }},
        {kOnLineYes, 1, "The site's firmware.inf offers no image.",
         [](T& t) { t.serve("[Corvane]\nVersion=A\n", "/firmware/firmware.inf"); }},
        {kSelect, 4, "firmware.inf does not say what the chosen image is.",
         [other](T& t) { t.offer("/f/a.hex\n", other); },
         "No new version in server!!\nFirmware download fail!!(Not define)\n"},
        {kFolder, 1, "No image is on offer: there is no firmware.inf yet.", [](T& t) { t.remove("firmware.inf"); },
         "Firmware file(s) not found !!!\n"},
        {kFolder, 1, "No image is on offer: none of those in firmware.inf lies in the Download folder.",
         [](T& t) { t.remove("Download/a.hex"); }},
        {kOnLine, 1, "No image was chosen.", [](T& t) { t.type({"n"}); }, "\n\nCancel Update!!!\n"},
        {kLocal, 1, "No image was chosen.", [](T& t) { t.type({"n"}); }},
        {kLocalYes, 1, "None of the images is for this device.", [](T& t) { t.image("[INFO]\nPGM=ZETA\n:00\n"); },
         "Firmware not found!!!\n"},
    };
}

std::vector<Way> WaysToFail::withoutAnImage() {
    const std::string move = "\n...\n1. Move the old one away, or make it one that this user may replace.";
    const std::string had = "The image could not be had: ", empty = "The image a.hex holds no data.",
                      unsafe = had + "the site's name for it, \"x\\a.hex\", may be no file's here.",
                      refused = "The image does not add up and was not installed.",
                      other =
                          "The image is not the one that firmware.inf means: its SHA-256 is $SUM, but firmware.inf "
                          "says 00.";
    static constexpr char kEmpty[] = "[INFO]\nPGM=TARN\n:00000001FF\n",
                          kUnsound[] = "[INFO]\nPGM=TARN\n:0400000001020304F2\n";
    const auto digests = [](T& t) { t.offer("/f/a.hex\nSHA256=00\n"); };
    const auto isUnsafe = [](T& t) { t.offer("x\\a.hex\n"); };
    const auto isEmpty = [](T& t) { t.serve(kEmpty); };
    const auto removed = [](T& t) { t.when("\n\n[FTP Site]\n", [&t] { t.remove("Download/a.hex"); }); };
    const auto unsound = [](T& t) { t.serve(kUnsound), t.image(kUnsound), t.type({"y", "n"}); };
    return {
        {kOnLineYes, 4, had + "the old $/Download/a.hex cannot be replaced: it is a folder." + move,
         [](T& t) {
             t.remove("Download/a.hex"), std::filesystem::create_directory(t.folder.folder.at("Download/a.hex"));
         }},
        {kOnLineYes, 4, had + "the transfer " + kBrokeOff, [](T& t) { t.withdraw("/f/a.hex"); }},
        {kOnLineYes, 4, had + "the old $/Download/status cannot be replaced: Operation not permitted." + move,
         [](T& t) { t.replace("Download", "/proc/self"), t.offer("/f/status\n"); }},
        {kOnLineYes, 4, unsafe, isUnsafe},
        {kFolder, 4, unsafe, isUnsafe, "\n\nFirmware download fail!!\n"},
        {kOnLineYes, 4, other, digests},
        {kFolder, 4, other, digests},
        {kFolder, 4, "The image is not there any more: a.hex does not lie in the Download folder.", removed},
        {kFolder, 4, "The image a.hex cannot be read: Input/output error.", [](T& t) { t.replace("Download/a.hex"); }},
        {kOnLineYes, 4, empty, isEmpty},
        {kFolder, 4, empty, isEmpty},
        {kLocalYes, 1, "$/local.hex: Invalid File Format!! The file cannot be read: Input/output error.",
         [](T& t) { t.replace("local.hex"); }},
        {kLocalYes, 4, "The image local.hex holds no data.", [](T& t) { t.image(kEmpty); }},
        {kOnLine, 1, refused, unsound},
        {kLocal, 1, refused, unsound},
    };
}

std::vector<Way> WaysToFail::atTheDevice() {
    const std::string lost = "COM1 was lost: it was unplugged, or its cable came loose.",
                      notChanged = "The device was not changed.\n", waits = "The device waits in its boot loader. ",
                      isSafe = "\n...\nIt is safe to unplug the device.\n1. Switch the device off and on",
                      isSafeThen = isSafe + ". If it starts, it runs its old firmware: update it again.",
                      better =
                          "\n...\nBetter leave the device plugged in; without power it stays in its boot loader and "
                          "can still be rescued.\n1. Leave the device connected and powered.",
                      plugIn = "\n...\n1. Plug it in again, and leave the device connected and powered.";
    const auto faulty = [](const char* fault) { return [fault](T& t) { t.device(fault); }; };
    const auto throwing = [](const char* logged) {
        return [logged](T& t) { t.when(logged, [] { throw std::runtime_error("no memory"); }); };
    };
    const auto unplugged = [](const char* logged) {
        return [logged](T& t) { t.type({"n"}), t.when(logged, [&t] { t.devices.back()->unplug(); }); };
    };
    const auto inJournal = [](T& t) { t.folder.data.file("Corvane", "a file and no folder"); };
    models::DeviceOptions options, silent, boot;
    options.password = "wing";
    silent.kind = models::Kind::silent;
    boot.startsInBoot = true;
    const auto locked = [options](T& t) { t.device("", options); };
    return {
        {kLocalYes, 3, "There is no port to look for a device at.", [](T& t) { t.serial.map.entries.clear(); }},
        {kElsewhere, 3, "There is no port to look for a device at: COM9 is not there."},
        {kOnLineYes, 3, "No port could be opened.", [](T& t) { t.serial.control.markBusy(1); }},
        {kLocalYes, 3, "No device was found; nothing was changed.\nNo device answered on any port.",
         [silent](T& t) { t.device("", silent); }},
        {kLocalYes, 3,
         "A device waits in its boot loader; nothing was changed.\nCOM1 answers with the prompt of a boot loader.",
         [boot](T& t) { t.device("", boot); }, ", In ISP Mode!!\nCan not found any device on comm port!!\n"},
        {kLocalYes, 1, "The run was cancelled.", [silent](T& t) { t.device("", silent), t.interruptAfter(500); }},
        {kLocal, 1, notChanged + "No image was chosen.\n" + lost, unplugged("[Local Site]\n")},
        {kLocalYes, 5,
         "The device wants a password; set CORVANE_DEVICE_PASSWORD.\n...\nThe device wants a password before it "
         "switches into its boot loader, and was given none that it takes.",
         locked},
        {kLocalYes, 5, "The device does not take the password that CORVANE_DEVICE_PASSWORD gives.",
         [locked](T& t) { locked(t), t.devicePassword = "wrong"; }},
        {kLocalYes, 5,
         notChanged + "The device did not agree to switch into its boot loader." + isSafe + " and try again.",
         faulty("refuse@1f=07"), "< NG\nCan't enter ISP Mode!!\n"},
        {kLocalYes, 5,
         "The device may wait in its boot loader. Its firmware is still there.\n"
         "The device was asked to switch into its boot loader and did not confirm it." +
             isSafeThen,
         faulty("drop@2")},
        {kLocalYes, 5,
         waits +
             "Its firmware is still there.\n"
             "The device agreed to switch, but its boot loader does not answer at the rates tried." +
             isSafeThen,
         faulty("boot-deaf=9000"), "< OK\nCan't enter ISP Mode!!\n"},
        {kLocalYes, 5, lost + plugIn, faulty("unplug-request@1f")},
        {kLocalYes, 5, waits + "It has no working firmware yet.\n" + lost + plugIn, faulty("unplug@1")},
        {kLocalYes, 5, waits + "Its firmware may be gone.\nErasing failed three times." + better,
         faulty("erase-nakx*")},
        {kLocalYes, 5, waits + "It has no working firmware yet.\nProgramming failed in three tries." + better,
         faulty("nak@2x*")},
        {kVerified, 6,
         "The device is programmed and was not heard of since.\nEvery record was acknowledged; then the device was "
         "told "
         "to restart, and nothing has answered since: COM1 was lost.",
         unplugged("Update Finish\n")},
        {kLocalYes, 4, "Something unexpected happened: no memory.", throwing("[Local Site]\n")},
        {kLocalYes, 5, "Something unexpected happened: no memory.", throwing("Programming...")},
        {kLocalYes, 0,
         "The journal $DATA/interrupted-runs could not be written (no folder can be made: $DATA: File exists): had the "
         "program or the "
         "computer failed meanwhile, the next start would not have known of this device.\nThe record "
         "$DATA/jobs.csv could not be written: no folder can be made: $DATA: File exists.",
         inJournal},
    };
}

INSTANTIATE_TEST_SUITE_P(Site, WaysToFail, ::testing::ValuesIn(WaysToFail::atTheSite()));
INSTANTIATE_TEST_SUITE_P(Image, WaysToFail, ::testing::ValuesIn(WaysToFail::withoutAnImage()));
INSTANTIATE_TEST_SUITE_P(Device, WaysToFail, ::testing::ValuesIn(WaysToFail::atTheDevice()));

}  // namespace
}  // namespace corvane
