#include <filesystem>
#include <stdexcept>

#include "ConsoleBench.h"
#include "text/Text.h"

namespace corvane {
namespace {

using Words = std::vector<std::string>;

class WaysToFail;

/// What goes wrong, what the operator reads then, and the log's last words; "$" is the program's folder.
struct Way {
    Words words;
    int status;
    std::string sentence;
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
        reader.answers["ftp://upd:@host"].content = "listing";
        serve(fakes::kImage);
    }

    void offer(const std::string& file, const std::string& head = "") {
        const auto list = head + "[PGM_A]\nPRODUCT=TARN\nVERSION=V9\nDESC=\nFILE=" + file;
        reader.answers["ftp://upd:@host/firmware/firmware.inf"].content = list;
        write("firmware.inf", list);
    }
    void serve(const std::string& content, const std::string& path = "/f/a.hex") {
        reader.answers["ftp://upd:@host" + path].content = content;
        write("Download/a.hex", content);
    }
    void device(std::string_view fault, models::DeviceOptions options = {}) {
        serial.map.entries.clear();
        if (!fault.empty()) options.faults.add(fault);
        plug(std::move(options));
    }
    void when(const std::string& logged, const std::function<void()>& handler) {
        out.onWrite = [this, logged, handler] {
            if (out.text.ends_with(logged)) handler();
        };
    }
    void interruptAfter(std::int64_t ms) {
        runtime.at(runtime.ms() + ms, [this] { interrupt(); });
    }
    /// Puts a link in the place of a file; "/proc/self/mem" is one that nobody can read at its start.
    void replace(const std::string& name, const std::string& target = "/proc/self/mem") {
        std::filesystem::remove_all(folder.folder.at(name));
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
    auto sentence = replaceAll(way.sentence, "$SUM", digest.sha256(fakes::kImage));
    sentence = replaceAll(replaceAll(sentence, "$DATA", folder.dataPath()), "$", folder.path());
    EXPECT_TRUE(says("corvane-cli: " + sentence + "\n")) << "not: " << sentence << "\nbut: " << err.text;
    EXPECT_TRUE(out.text.ends_with(way.last)) << out.text;
}

using T = WaysToFail;
const Words kOnLine = {"update", "--server", "host", "--user", "upd"},
            kOnLineYes = {"update", "--server", "host", "--user", "upd", "--yes"};
const Words kFolder = {"update", "--offline", "--yes"};
const Words kLocal = {"update", "--file", "$/local.hex"}, kLocalYes = {"update", "--file", "$/local.hex", "--yes"};
const Words kNewer = {"update", "--server", "host", "--user", "upd", "--yes", "--self-update"};

std::vector<Way> WaysToFail::atTheSite() {
    const std::string newer = "[Corvane]\nVersion=Z\n", closed =
                                                            "The session with the site was closed while a question "
                                                            "stood open, since nothing was asked of the site for three "
                                                            "minutes.";
    return {
        {kOnLineYes, 4,
         "The login failed: the dialogue with the server broke off: the server did not answer with data.",
         [](T& t) { t.reader.answers.erase("ftp://upd:@host"); }, "Login Server... < NG\n"},
        {kOnLineYes, 1, "The run was cancelled.",
         [](T& t) { t.reader.answers["ftp://upd:@host"].ends = false, t.interruptAfter(500); }},
        {kOnLineYes, 4,
         "firmware.inf could not be fetched: the transfer broke off: the server did not answer with data.",
         [](T& t) { t.reader.answers.erase("ftp://upd:@host/firmware/firmware.inf"); }, "Downloading File... < NG\n"},
        {kOnLine, 4, closed, [](T& t) { t.type({"y"}, 190000); }},
        {kNewer, 4, "The newer program does not start: Exec format error.",
         [newer](T& t) {
             t.offer("/f/a.hex\n", newer), t.serve("x", "/firmware/utility/corvane.exe");
             t.launcher.failure = "Exec format error";
         }},
        {kNewer, 0,
         "The newer program could not be fetched: the transfer broke off: the server did not answer with data. This "
         "one went on.",
         [newer](T& t) { t.offer("/f/a.hex\n", newer); }},
        {kOnLineYes, 1, "The site's firmware.inf offers no image.",
         [](T& t) { t.serve("[Corvane]\nVersion=A\n", "/firmware/firmware.inf"); }},
        {{"update", "--server", "host", "--user", "upd", "--select", "PGM X", "--yes"},
         4,
         "firmware.inf does not say what the chosen image is.",
         [](T& t) { t.offer("/f/a.hex\n", "[PGM X]\nPRODUCT=TARN\nVERSION=V1\nDESC=\nFILE=x\n"); },
         "No new version in server!!\nFirmware download fail!!(Not define)\n"},
        {kFolder, 1, "No image is on offer: there is no firmware.inf yet.",
         [](T& t) { std::filesystem::remove(t.folder.folder.at("firmware.inf")); }, "Firmware file(s) not found !!!\n"},
        {kFolder, 1, "No image is on offer: none of those in firmware.inf lies in the Download folder.",
         [](T& t) { std::filesystem::remove(t.folder.folder.at("Download/a.hex")); }},
        {kOnLine, 1, "No image was chosen.", [](T& t) { t.type({"n"}); }, "\n\nCancel Update!!!\n"},
        {kLocal, 1, "No image was chosen.", [](T& t) { t.type({"n"}); }},
        {kLocalYes, 1, "None of the images is for this device.", [](T& t) { t.image("[INFO]\nPGM=ZETA\n:00\n"); },
         "Firmware not found!!!\n"},
    };
}

std::vector<Way> WaysToFail::withoutAnImage() {
    const std::string unsafe =
        "The image could not be had: the site's name for it, \"x\\a.hex\", may be no file's here.";
    const std::string other =
        "The image is not the one that firmware.inf means: its SHA-256 is $SUM, but firmware.inf says 00.";
    const std::string empty = "The image a.hex holds no data.",
                      refused = "The image does not add up and was not installed.";
    static constexpr char kEmpty[] = "[INFO]\nPGM=TARN\n:00000001FF\n",
                          kUnsound[] = "[INFO]\nPGM=TARN\n:0400000001020304F2\n";
    const auto digests = [](T& t) { t.offer("/f/a.hex\nSHA256=00\n"); };
    const auto isUnsafe = [](T& t) { t.offer("x\\a.hex\n"); };
    return {
        {kOnLineYes, 4, "The image could not be had: the transfer broke off: the server did not answer with data.",
         [](T& t) { t.reader.answers.erase("ftp://upd:@host/f/a.hex"); }},
        {kOnLineYes, 4,
         "The image could not be had: the old $/Download/status cannot be replaced: Operation not permitted.",
         [](T& t) { t.replace("Download", "/proc/self"), t.offer("/f/status\n"); }},
        {kOnLineYes, 4, unsafe, isUnsafe},
        {kFolder, 4, unsafe, isUnsafe, "\n\nFirmware download fail!!\n"},
        {kOnLineYes, 4, other, digests},
        {kFolder, 4, other, digests},
        {kFolder, 4, "The image is not there any more: a.hex does not lie in the Download folder.",
         [](T& t) {
             t.when("\n\n[FTP Site]\n", [&t] { std::filesystem::remove(t.folder.folder.at("Download/a.hex")); });
         }},
        {kFolder, 4, "The image a.hex cannot be read: Input/output error.", [](T& t) { t.replace("Download/a.hex"); }},
        {kOnLineYes, 4, empty, [](T& t) { t.serve(kEmpty); }},
        {kFolder, 4, empty, [](T& t) { t.serve(kEmpty); }},
        {kLocalYes, 1, "$/local.hex: Invalid File Format!! The file cannot be read: Input/output error.",
         [](T& t) { t.replace("local.hex"); }},
        {kLocalYes, 4, "The image local.hex holds no data.", [](T& t) { t.image(kEmpty); }},
        {kOnLine, 1, refused,
         [](T& t) {
             t.serve(kUnsound), t.type({"y", "n"});
         }},
        {kLocal, 1, refused,
         [](T& t) {
             t.image(kUnsound), t.type({"y", ""});
         }},
    };
}

std::vector<Way> WaysToFail::atTheDevice() {
    const std::string lost = "COM1 was lost: it was unplugged, or its cable came loose.";
    const auto faulty = [](const char* fault) { return [fault](T& t) { t.device(fault); }; };
    const auto throwing = [](const char* logged) {
        return [logged](T& t) { t.when(logged, [] { throw std::runtime_error("no memory"); }); };
    };
    const auto inJournal = [](T& t) { t.folder.data.file("Corvane", "a file and no folder"); };
    models::DeviceOptions locked, silent, boot;
    locked.password = "wing";
    silent.kind = models::Kind::silent;
    boot.startsInBoot = true;
    return {
        {kLocalYes, 3, "There is no port to look for a device at.", [](T& t) { t.serial.map.entries.clear(); }},
        {{"update", "--file", "$/local.hex", "--port", "COM9"},
         3,
         "There is no port to look for a device at: COM9 is not there."},
        {kOnLineYes, 3, "No port could be opened.", [](T& t) { t.serial.control.markBusy(1); }},
        {kLocalYes, 3, "No device answered on any port.", [silent](T& t) { t.device("", silent); }},
        {kLocalYes, 3, "COM1 answers with the prompt of a boot loader.", [boot](T& t) { t.device("", boot); },
         ", In ISP Mode!!\nCan not found any device on comm port!!\n"},
        {kLocalYes, 1, "The run was cancelled.", [silent](T& t) { t.device("", silent), t.interruptAfter(500); }},
        {kLocalYes, 5,
         "The device wants a password before it switches into its boot loader, and was given none that it takes.",
         [locked](T& t) { t.device("", locked); }},
        {kLocalYes, 5, "The device wants a password; set CORVANE_DEVICE_PASSWORD.",
         [locked](T& t) { t.device("", locked); }},
        {kLocalYes, 5, "The device does not take the password that CORVANE_DEVICE_PASSWORD gives.",
         [locked](T& t) { t.device("", locked), t.devicePassword = "wrong"; }},
        {kLocalYes, 5, "The device did not agree to switch into its boot loader.", faulty("refuse@1f=07"),
         "< NG\nCan't enter ISP Mode!!\n"},
        {kLocalYes, 5, "The device was asked to switch into its boot loader and did not confirm it.", faulty("drop@2")},
        {kLocalYes, 5, "The device agreed to switch, but its boot loader does not answer at the rates tried.",
         faulty("boot-deaf=9000"), "< OK\nCan't enter ISP Mode!!\n"},
        {kLocalYes, 5, lost, faulty("unplug-request@1f")},
        {kLocalYes, 5, lost, faulty("unplug@1")},
        {kLocalYes, 5, "Erasing failed three times.", faulty("erase-nakx*")},
        {kLocalYes, 5, "Programming failed in three tries.", faulty("nak@2x*")},
        {kLocalYes, 4, "Something unexpected happened: no memory.", throwing("[Local Site]\n")},
        {kLocalYes, 5, "Something unexpected happened: no memory.", throwing("Programming...")},
        {kLocalYes, 0,
         "The journal $DATA/interrupted-runs could not be written (the folder cannot be made): had the program or the "
         "computer failed meanwhile, "
         "the next start would not have known of this device.",
         inJournal},
        {kLocalYes, 0, "The record $DATA/jobs.csv could not be written: the folder cannot be made.", inJournal},
    };
}

INSTANTIATE_TEST_SUITE_P(Site, WaysToFail, ::testing::ValuesIn(WaysToFail::atTheSite()));
INSTANTIATE_TEST_SUITE_P(Image, WaysToFail, ::testing::ValuesIn(WaysToFail::withoutAnImage()));
INSTANTIATE_TEST_SUITE_P(Device, WaysToFail, ::testing::ValuesIn(WaysToFail::atTheDevice()));

}  // namespace
}  // namespace corvane
