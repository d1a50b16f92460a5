#include "run/EndTable.h"

#include <cstddef>

namespace corvane {
namespace {

using Steps = std::array<const char*, 5>;
using Kind = VerdictKind;

constexpr int kUpdated = 0, kWithoutUpdate = 1, kNoDevice = 3, kNoImage = 4, kLeftInBootLoader = 5, kNotConfirmed = 6;

constexpr char kWithoutSite[] = "Without a site: go off line and use a local image.";
constexpr char kTellTheSite[] = "If it stays like this, tell whoever runs the site.";
constexpr char kLeaveConnected[] = "Leave the device connected and powered.";
constexpr char kPlugIn[] = "Plug it in again, and leave the device connected and powered.";
constexpr char kForce[] = "Force an update (Force ISP, or --force on the console) with the same image.";
constexpr char kOtherCable[] =
    "If it fails again, use another cable or USB port, without a hub, and force it once more.";
constexpr char kOtherImage[] = "If it still fails, the image may not be sound: check it, or take another version.";
constexpr char kOffAndOn[] = "Switch the device off and on. If it starts, it runs its old firmware: update it again.";
constexpr char kForceIfDead[] =
    "If it does not start, force an update: the scan then takes the boot loader at the rate at which it answers.";
constexpr char kOtherRate[] =
    "If no scan finds it, the image may name another boot-loader rate (ISP_BAUDRATE): ask the maker.";
constexpr char kNothingFound[] = "No device was found; nothing was changed.";
constexpr char kLost[] = "% was lost: it was unplugged, or its cable came loose";

constexpr char kOtherVersion[] = "The device answers with another version than the image's";
constexpr char kNotConfirmedLine[] = "The device is programmed and runs. Its version is not confirmed.";

constexpr Steps kVersionSteps = {
    "Switch the device off and on, and scan for it: some say their new version only then.",
    "If it stays like this, ask the image's maker which version it should say, or update once more."};
constexpr Steps kSiteSteps = {"Try again; the site may be busy.", kTellTheSite, kWithoutSite};
constexpr Steps kRoomSteps = {"Make room on the disk, or make the folder one that this user may write to.",
                              "Then start again."};
constexpr Steps kSwitchSteps = {kOffAndOn, kForceIfDead, kOtherRate};
constexpr Steps kForceSteps = {kLeaveConnected, kForce, kOtherCable, kOtherImage};

/// In the order of RunEnd. An end that is to be told apart gets a line here, and nothing else has to know of it.
constexpr EndRow kEnds[] = {
    {RunEnd::updated, kUpdated, "", {}, "The device is updated.", Kind::updated},
    {RunEnd::notConfirmed, kUpdated, kOtherVersion, kVersionSteps, kNotConfirmedLine, Kind::unconfirmed},
    {RunEnd::otherVersion, kNotConfirmed, kOtherVersion, kVersionSteps, kNotConfirmedLine, Kind::unconfirmed},
    {RunEnd::notHeardOf,
     kNotConfirmed,
     "Every record was acknowledged; then the device was told to restart, and nothing has answered since",
     {"Switch the device off and on, and scan for it.",
      "If it does not start, force an update with the same image (Force ISP, or --force on the console)."}},
    {RunEnd::outOfStep,
     kNotConfirmed,
     "After the last record an answer came that was not due, so one of the records may be missing",
     {"Update the device once more with the same image.", "If it happens again, use another cable or USB port."}},
    {RunEnd::notRestarted,
     kLeftInBootLoader,
     "The device was told three times to restart and did not",
     {"Switch the device off and on: it then starts its new firmware.",
      "If it does not start, force an update with the same image (Force ISP, or --force on the console)."}},
    {RunEnd::alreadyRunning, kWithoutUpdate, "Another run is on", {}, nullptr, {}, false, false},
    {RunEnd::cancelled, kWithoutUpdate, "The run was cancelled"},

    {RunEnd::loginRefused,
     kNoImage,
     "The site did not accept the login",
     {"Check user name and password.", "If they are right, ask whoever runs the site.", kWithoutSite}},
    {RunEnd::loginFailed,
     kNoImage,
     "The login failed",
     {"Check the server's name.", "Check the network, and how the site is reached (Options).", kWithoutSite}},
    {RunEnd::sessionClosed,
     kNoImage,
     "The session with the site was closed while a question stood open, since nothing was asked of the site for three "
     "minutes",
     {"Start again and answer within three minutes.", kWithoutSite}},
    {RunEnd::informationMissing, kNoImage, "firmware.inf could not be fetched", kSiteSteps},
    {RunEnd::notStored, kNoImage, "%", kRoomSteps},
    {RunEnd::oldFileStays,
     kNoImage,
     "%",
     {"Move the old one away, or make it one that this user may replace.", "Then start again."}},
    {RunEnd::listNotBelieved,
     kNoImage,
     "firmware.inf is not to be believed",
     {"Try again. If it stays like this, tell whoever runs the site, and not by way of that site: somebody may have "
      "changed what it offers.",
      "If the maker has a new key, get it from the maker and put it beside the one that is known here.",
      "If the site has gone back to an older list on purpose: corvane-cli update --accept-older-list takes it.",
      kWithoutSite}},
    {RunEnd::handedOver, kWithoutUpdate, "", {}, "The newer program has been started.", Kind::handedOver, false, false},
    {RunEnd::handOverFailed,
     kNoImage,
     "The newer program does not start",
     {"Start again and answer the question about the newer program with Cancel: this one still updates.",
      "Tell whoever runs the site that the newer program does not start here."}},

    {RunEnd::noPort,
     kNoDevice,
     "There is no port to look for a device at",
     {"Plug in the adapter or the reader, and look whether it is listed then.",
      "If it is not, use another USB port or cable, or name its port in serialcomm.conf."},
     kNothingFound},
    {RunEnd::noPortOpened,
     kNoDevice,
     "No port could be opened",
     {"Close other programs that use the port.", "Check that this user may use it.",
      "Take the adapter or the reader out and plug it in again."},
     kNothingFound},
    {RunEnd::noDevice,
     kNoDevice,
     "No device answered on any port",
     {"Check the device's power and its cable.", "Close other programs that use the port.",
      "If the device does not start any more, force the update: its boot loader is then taken, too."},
     kNothingFound},
    {RunEnd::bootLoaderSeen,
     kNoDevice,
     "% answers with the prompt of a boot loader",
     {kLeaveConnected,
      "Force an update (Force ISP, or --force on the console): its boot loader is then taken, and every image is "
      "offered.",
      "Choose the image that is made for this device."}},

    {RunEnd::declined, kWithoutUpdate, "No image was chosen"},
    {RunEnd::nothingSuitable,
     kWithoutUpdate,
     "None of the images is for this device",
     {"Check that the image is made for this product.",
      "Only if you are sure: force the update; all images are offered then."}},
    {RunEnd::nothingListed,
     kWithoutUpdate,
     "The site's firmware.inf offers no image",
     {"Tell whoever runs the site.", kWithoutSite}},
    {RunEnd::nothingDownloaded,
     kWithoutUpdate,
     "No image is on offer",
     {"Go on line once, so that the list and the images are fetched, or choose a local file."}},
    {RunEnd::notDefined,
     kNoImage,
     "firmware.inf does not say what the chosen image is",
     {"Choose another image.", kTellTheSite}},

    {RunEnd::imageNotFetched, kNoImage, "The image could not be had", kSiteSteps},
    {RunEnd::imageNotThere,
     kNoImage,
     "The image is not there any more",
     {"Check that the image is where it was, and choose it again."}},
    {RunEnd::imageNotTheOne,
     kNoImage,
     "The image is not the one that firmware.inf means",
     {"Go on line and update once more, so that both are fetched anew.", kTellTheSite, kWithoutSite}},
    {RunEnd::imageUnreadable,
     kNoImage,
     "The image %",
     {"Check that this user may read the file, and that its disk is there.",
      "Choose it again, or another copy of it."}},
    {RunEnd::imageTooLarge,
     kNoImage,
     "The image %",
     {"Check that it is the image that was meant.",
      "If it is, raise the limit: ImageLimit in the section Update of the settings file, in MiB."}},
    {RunEnd::imageEmpty,
     kNoImage,
     "The image %",
     {"Fetch the image again, or ask its maker for a sound one.", "corvane-cli check says what is wrong with it."}},
    {RunEnd::imageRefused,
     kWithoutUpdate,
     "The image does not add up and was not installed",
     {"Fetch the image again, or ask its maker for a sound one.", "corvane-cli check says what is wrong with it."}},
    {RunEnd::notRemembered, kWithoutUpdate,
     "The journal of devices without firmware could not be written, and nothing was installed without it", kRoomSteps},

    {RunEnd::switchLocked,
     kLeftInBootLoader,
     "The device wants a password before it switches into its boot loader, and was given none that it takes",
     {"Ask whoever set the password, and update again.", "If it does not answer, switch the device off and on."}},
    {RunEnd::switchRefused,
     kLeftInBootLoader,
     "The device did not agree to switch into its boot loader",
     {"Switch the device off and on and try again.", "If it wants a password, ask whoever set it."}},
    {RunEnd::switchUnanswered, kLeftInBootLoader,
     "The device was asked to switch into its boot loader and did not confirm it", kSwitchSteps},
    {RunEnd::bootLoaderSilent, kLeftInBootLoader,
     "The device agreed to switch, but its boot loader does not answer at the rates tried", kSwitchSteps},
    {RunEnd::lostInSwitch, kLeftInBootLoader, kLost, {kPlugIn, kOffAndOn, kForceIfDead, kOtherRate}, nullptr, {}, true},
    {RunEnd::eraseFailed, kLeftInBootLoader, "Erasing failed three times", kForceSteps},
    {RunEnd::programmingFailed, kLeftInBootLoader, "Programming failed in three tries", kForceSteps},
    {RunEnd::lostInBootLoader,
     kLeftInBootLoader,
     kLost,
     {kPlugIn, kForce, kOtherCable, kOtherImage},
     nullptr,
     {},
     true},

    {RunEnd::failed,
     kNoImage,
     "Something unexpected happened",
     {"Start again.", "If it stays like this, save the log and ask the maker."}},
    {RunEnd::failedMidway, kLeftInBootLoader, "Something unexpected happened", kForceSteps},
};

constexpr char kNotChanged[] = "The device was not changed.";

/// In the order of DeviceState.
constexpr DeviceRow kDevices[] = {
    {DeviceState::none, Kind::untouched, kNotChanged},
    {DeviceState::application, Kind::untouched, kNotChanged},
    // A boot loader starts firmware that is whole when the power comes back. Whether this one has any is not known, so
    // it had better stay under power.
    {DeviceState::leftInBootLoader, Kind::untouched, "A device waits in its boot loader; nothing was changed.", false},
    {DeviceState::mayBeInBootLoader, Kind::uncertain,
     "The device may wait in its boot loader. Its firmware is still there."},
    {DeviceState::bootLoaderWhole, Kind::waiting, "The device waits in its boot loader. Its firmware is still there."},
    {DeviceState::bootLoaderDoubtful, Kind::waiting, "The device waits in its boot loader. Its firmware may be gone.",
     false},
    {DeviceState::bootLoaderEmpty, Kind::waiting,
     "The device waits in its boot loader. It has no working firmware yet.", false},
    {DeviceState::bootLoaderComplete, Kind::waiting,
     "The device waits in its boot loader with the new firmware complete."},
    {DeviceState::gone, Kind::untouched, kNotChanged, true, true, kLost},
    {DeviceState::unheard, Kind::unconfirmed, "The device is programmed and was not heard of since."},
    {DeviceState::inDoubt, Kind::unconfirmed, "The device runs, but its memory may not be the image's."},
};

template <typename Row, std::size_t count, typename Key>
constexpr bool areInOrder(const Row (&rows)[count], Key Row::*key, Key last) {
    for (std::size_t i = 0; i < count; ++i) {
        if (rows[i].*key != static_cast<Key>(i)) return false;
    }
    return static_cast<std::size_t>(last) + 1 == count;
}
static_assert(areInOrder(kEnds, &EndRow::end, RunEnd::failedMidway));
static_assert(areInOrder(kDevices, &DeviceRow::state, DeviceState::inDoubt));

}  // namespace

const EndRow& rowOf(RunEnd end) { return kEnds[static_cast<std::size_t>(end)]; }
const DeviceRow& rowOf(DeviceState state) { return kDevices[static_cast<std::size_t>(state)]; }

VerdictKind kindOf(const Outcome& outcome) { return rowOf(outcome.end).kind.value_or(rowOf(outcome.device).kind); }

}  // namespace corvane
