// What every asynchronous reader does, the one over FTP and the one of the tests.

#include <functional>
#include <gtest/gtest.h>
#include <memory>

#include "ftp/ReadLog.h"
#include "platform/linux/transfer/CurlAsyncReader.h"
#include "support/FakeAsyncReader.h"
#include "support/SiteProcess.h"

namespace corvane::fakes {
namespace {

/// A reader, and a site with a file, an empty one, and one whose transfer stalls.
class World {
public:
    virtual ~World() = default;
    virtual AsyncReader& reader() = 0;
    virtual Runtime& runtime() = 0;
    virtual std::string host() const = 0;
};

class RealWorld : public World {
public:
    RealWorld() : site_("ftp_site.py", json()), reader_(runtime_) {}
    AsyncReader& reader() override { return reader_; }
    Runtime& runtime() override { return runtime_; }
    std::string host() const override { return site_.address(); }

private:
    std::string json() {
        root_.file("firmware/image.hex", everyByte());
        root_.file("firmware/empty", "");
        root_.file("firmware/stalls", everyByte());
        return R"({"root": ")" + root_.path() + R"(", "accounts": {"upd": "pw"}, "stall": {"/firmware/stalls": 1000}})";
    }

    ScratchFolder root_;
    SiteProcess site_;
    LinuxRuntime runtime_;
    CurlAsyncReader reader_;
};

class FakeWorld : public World {
public:
    FakeWorld() : reader_(runtime_) {
        reader_.answers["ftp://upd:pw@site"] = {"a listing"};
        reader_.answers["ftp://upd:pw@site/firmware/image.hex"] = {everyByte(), 200, 3};
        reader_.answers["ftp://upd:pw@site/firmware/empty"] = {""};
        reader_.answers["ftp://upd:pw@site/firmware/stalls"] = {everyByte(), 100, 1, true, false};
    }
    AsyncReader& reader() override { return reader_; }
    Runtime& runtime() override { return runtime_; }
    std::string host() const override { return "site"; }

private:
    FakeRuntime runtime_;
    FakeAsyncReader reader_;
};

struct Side {
    const char* name;
    std::function<std::unique_ptr<World>()> make;
};

class AsyncReaderContract : public testing::TestWithParam<Side> {
protected:
    Address address(const std::string& path, const std::string& password = "pw") const {
        Address address{"upd", password, {}, 0, path};
        address.server(world_->host());
        return address;
    }

    std::unique_ptr<World> world_ = GetParam().make();
    AsyncReader& reader_ = world_->reader();
    ReadLog log_{reader_, world_->runtime()};
    ScratchFolder local_;
};

TEST_P(AsyncReaderContract, FileComesBesideItsTargetUnderAnotherName) {
    const auto target = local_.file("image.hex", "old");
    const auto result = log_.read(address("/firmware/image.hex"), target);
    EXPECT_EQ(std::filesystem::path(result.value).parent_path(), local_.path());
    EXPECT_EQ(ScratchFolder::content(target), "old");
    EXPECT_FALSE(reader_.failure());
    ASSERT_FALSE(log_.progress.empty());
    for (const auto& report : {result, log_.progress.back()}) {
        EXPECT_EQ(report.bytesRead, 3000);
        EXPECT_EQ(report.bytesMax, 3000);
        EXPECT_EQ(report.propertyName, target);
    }
    EXPECT_TRUE(ReadLog::taken(result) == everyByte());
}

TEST_P(AsyncReaderContract, FailedReadCompletesWithNothing) {
    const auto target = local_.at("image.hex");
    using Kind = ReadFailure::Kind;
    const bool isReal = world_->host() != "site";
    const struct {
        const char* what;
        Address address;
        std::string property;
        Kind kind;
    } kReads[] = {
        {"wrong password", address("/firmware/image.hex", "no"), target, Kind::login},
        {"missing file", address("/firmware/nothing"), target, Kind::refused},
        {"empty file", address("/firmware/empty"), target, Kind::refused},
        {"no folder for it", address("/firmware/image.hex"), local_.at("missing/image.hex"), Kind::storage},
        {"command in the path", address("/firmware/image.hex\r\nQUIT"), target, Kind::noAddress},
        {"NUL", address("/firmware/image.hex", std::string("pw\0", 3)), target, Kind::noAddress},
        {"no host", Address{"upd", "pw", "", 0, "/firmware/image.hex"}, target, Kind::noAddress},
        {"another host", Address{"upd", "pw", "x/" + world_->host(), 0, "/firmware/image.hex"}, target,
         Kind::noAddress},
    };
    for (const auto& read : kReads) {
        SCOPED_TRACE(read.what);
        const auto result = log_.read(read.address, read.property);
        EXPECT_EQ(result.bytesRead, 0);
        EXPECT_EQ(result.value, "");
        EXPECT_EQ(result.propertyName, read.property);
        EXPECT_TRUE(isReal ? reader_.failure().kind == read.kind : bool(reader_.failure()));
        EXPECT_NE(reader_.failure().words, "");
        EXPECT_TRUE(local_.names().empty());
    }
    EXPECT_EQ(log_.read(address("/firmware/image.hex"), target).bytesRead, 3000);
    EXPECT_FALSE(reader_.failure());
}

TEST_P(AsyncReaderContract, CancelledReadIsNeverReported) {
    // However far it has come: not begun, connecting, logging in, transferring, or done and not yet reported.
    for (int rounds = 0; rounds < 20; ++rounds) {
        reader_.start(address("/firmware/image.hex"), local_.at("image.hex"));
        for (int i = 0; i < rounds; ++i) world_->runtime().WaitActivity(10);
        reader_.cancel(rounds % 2 ? std::optional(local_.at("image.hex")) : std::nullopt);
        EXPECT_TRUE(local_.names().empty());
        world_->runtime().DoEvents();
    }
    EXPECT_TRUE(log_.progress.empty());
    reader_.start(address("/firmware/image.hex"), local_.at("image.hex"));
    reader_.cancel(local_.at("other"));  // which is none of its
    ASSERT_TRUE(log_.waitForProgress());
    while (log_.completed.empty()) log_.round();
    EXPECT_TRUE(ReadLog::taken(log_.completed.front()) == everyByte());
}

TEST_P(AsyncReaderContract, RunningReadEndsUnreportedWhenAnotherOrNoneIsWanted) {
    const std::function<void()> kEndings[] = {
        [this] { log_.read(address("/firmware/image.hex"), local_.at("image.hex")); },
        [this] { reader_.closeSession(); },
        [this] { reader_.cancel(std::nullopt); },
    };
    for (const auto& end : kEndings) {
        log_.clear();
        reader_.start(address("/firmware/stalls"), local_.at("stalls"));
        ASSERT_TRUE(log_.waitForProgress());
        end();
        log_.read(address("/firmware/image.hex"), local_.at("image.hex"));
        ASSERT_EQ(log_.completed.size(), 1U);
        EXPECT_TRUE(ReadLog::taken(log_.completed.front()) == everyByte());
    }
    EXPECT_TRUE(local_.names().empty());
}

INSTANTIATE_TEST_SUITE_P(Sides, AsyncReaderContract,
                         testing::Values(Side{"Real", [] { return std::make_unique<RealWorld>(); }},
                                         Side{"Fake", [] { return std::make_unique<FakeWorld>(); }}),
                         [](const auto& side) { return side.param.name; });

}  // namespace
}  // namespace corvane::fakes
