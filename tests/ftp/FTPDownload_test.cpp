#include "ftp/FTPDownload.h"

#include <gtest/gtest.h>
#include <stdexcept>

#include "support/FakeAsyncReader.h"
#include "support/ScratchFolder.h"

namespace corvane::fakes {
namespace {

using Texts = std::vector<std::string>;

class FTPDownloadTest : public testing::Test {
protected:
    FTPDownloadTest() {
        ftp_.HostName("site");
        ftp_.Username("upd");
        ftp_.Password("pw");
        ftp_.GetProgress = [this](std::int32_t percent) { events_.push_back(std::to_string(percent) + " %"); };
        ftp_.AsyncReadProgress = [this](const AsyncResult& result) { note("progress", result); };
        ftp_.AsyncReadComplete = [this](const AsyncResult& result) { note("complete", result); };
        reader_.answers["ftp://upd:pw@site"] = {"a listing"};
        reader_.answers["ftp://upd:pw@site/image"] = {"0123456789", 300, 3};
    }

    void note(const std::string& what, const AsyncResult& result) {
        events_.push_back(what + " " + std::to_string(result.bytesRead) + " of " + std::to_string(result.bytesMax));
    }

    FakeRuntime runtime_;
    FakeAsyncReader reader_{runtime_};
    FTPDownload ftp_{reader_, runtime_};
    ScratchFolder local_;
    std::string target_ = local_.at("image");
    Texts events_;
};

TEST_F(FTPDownloadTest, ConnectedWhenTheServerAnswersWithData) {
    EXPECT_FALSE(ftp_.IsConnected());
    EXPECT_TRUE(ftp_.Connect() && ftp_.IsConnected());
    EXPECT_TRUE(events_.empty());
    EXPECT_FALSE(ftp_.failure());
    auto& answer = reader_.answers["ftp://upd:pw@site"];
    answer = {""};
    EXPECT_FALSE(ftp_.Connect() || ftp_.IsConnected());
    EXPECT_EQ(ftp_.failure().words, "the server did not answer with data");
    EXPECT_EQ(ftp_.ErrorLogText(), "");
    answer = {"late", 31'000'000};
    EXPECT_TRUE(ftp_.Connect());
    answer.ends = false;
    const auto start = runtime_.ms();
    runtime_.at(start + 20, [&] { ftp_.CancelAsyncRead(target_); });  // which is another read
    runtime_.at(start + 50, [&] { ftp_.CancelAsyncRead(); });
    EXPECT_FALSE(ftp_.Connect());
    EXPECT_EQ(runtime_.ms(), start + 50);
    EXPECT_FALSE(ftp_.IsConnected() || reader_.isReading());
}

TEST_F(FTPDownloadTest, FileReplacesTheOldOneAndIsReported) {
    local_.file("image", "old");
    EXPECT_TRUE(ftp_.GetFile("/image", target_));
    EXPECT_EQ(ScratchFolder::content(target_), "0123456789");
    EXPECT_EQ(local_.names(), Texts{"image"});
    EXPECT_EQ(events_, (Texts{"30 %", "progress 3 of 10", "60 %", "progress 6 of 10", "100 %", "progress 10 of 10",
                              "complete 10 of 10"}));
    reader_.answers["ftp://upd:pw@site/image"] = {"0123456789", 300, 2, false};
    events_.clear();
    EXPECT_TRUE(ftp_.GetFile("/image", target_));  // an unknown size has no percentage
    EXPECT_EQ(events_, (Texts{"progress 5 of 0", "progress 10 of 0", "complete 10 of 0"}));
}

TEST_F(FTPDownloadTest, FailuresLeaveItIdle) {
    bool others = false;
    for (const bool connects : {true, false}) {
        runtime_.at(runtime_.ms() + 50,
                    [&] { others = others || ftp_.GetFile("/image", local_.at("other")) || ftp_.Connect(); });
        EXPECT_TRUE(connects ? ftp_.Connect() : ftp_.GetFile("/image", target_));
    }
    EXPECT_FALSE(others);
    EXPECT_EQ(local_.names(), Texts{"image"});
    ftp_.AsyncReadProgress = [](const AsyncResult&) { throw std::runtime_error("no room for it"); };
    EXPECT_FALSE(ftp_.GetFile("/image", target_));
    EXPECT_EQ(ftp_.failure().words, "no room for it");
    EXPECT_FALSE(reader_.isReading());
    ftp_.AsyncReadProgress = nullptr;
    std::filesystem::remove(target_);
    local_.file("image/in the way", "");
    EXPECT_FALSE(ftp_.GetFile("/image", target_));
    EXPECT_EQ(events_.back(), "complete 0 of 10");
    EXPECT_EQ(local_.names(), Texts{"image"});
    EXPECT_EQ(ftp_.failure().words, "the old " + target_ + " cannot be replaced: Is a directory");
    EXPECT_FALSE(ftp_.GetFile("/folder/", target_));  // whose listing is no file
    EXPECT_EQ(ftp_.failure().kind, ReadFailure::Kind::noFile);
}

TEST_F(FTPDownloadTest, ReadThatNobodyWaitsForDeliversNothing) {
    const std::function<void()> kReads[] = {
        [this] { EXPECT_TRUE(ftp_.GetFile("/image", target_, true)); },
        [this] { ftp_.AsyncRead("ftp://u%70d:pw@site/image", 1, target_); },
        [this] { ftp_.AsyncRead("no address", 1, target_); },
        [this] { ftp_.AsyncRead("ftp://upd:pw@site/image", 2, target_); },
    };
    for (const auto& read : kReads) {
        const auto start = runtime_.ms();
        read();
        EXPECT_EQ(runtime_.ms(), start);
        EXPECT_TRUE(reader_.isReading() || &read >= &kReads[2]);
        runtime_.Sleep(1000);
        runtime_.DoEvents();
        EXPECT_FALSE(reader_.isReading());
    }
    EXPECT_TRUE(events_.empty());
    EXPECT_TRUE(local_.names().empty());
}

TEST_F(FTPDownloadTest, PercentageIsRoundedToEven) {
    const std::tuple<std::int64_t, std::int64_t, const char*> kReports[] = {
        {0, 1, "0 %"},
        {1, 8, "12 %"},
        {3, 8, "38 %"},
        {1999, 2000, "100 %"},
        {1, 40, "2 %"},
        {12, 10, "100 %"},
        {5'000'000'000, 10'000'000'000, "50 %"},
    };
    runtime_.at(50, [&] {
        for (const auto& [read, whole, percent] : kReports) {
            events_.clear();
            reader_.onProgress({read, whole, target_, {}});
            EXPECT_EQ(events_.front(), percent);
        }
    });
    ASSERT_TRUE(ftp_.GetFile("/image", target_));
}

TEST_F(FTPDownloadTest, CancelEndsADownloadAtOnce) {
    local_.file("image", "old");
    const std::optional<std::string> kProperties[] = {std::nullopt, target_, "other"};
    for (const auto& property : kProperties) {
        const auto start = runtime_.ms();
        events_.clear();
        runtime_.at(start + 150, [&] { ftp_.CancelAsyncRead(property); });
        EXPECT_FALSE(ftp_.GetFile("/image", target_));
        EXPECT_EQ(runtime_.ms(), start + 150);
        runtime_.Sleep(1000);
        runtime_.DoEvents();
        EXPECT_EQ(events_, (Texts{"30 %", "progress 3 of 10"}));
        EXPECT_EQ(ScratchFolder::content(target_), "old");
    }
    EXPECT_TRUE(ftp_.GetFile("/image", target_));
}

TEST_F(FTPDownloadTest, DisconnectTakesLeaveAndCancelsWhatRuns) {
    ASSERT_TRUE(ftp_.Connect());
    reader_.calls.clear();
    runtime_.at(runtime_.ms() + 150, [&] { ftp_.Disconnect(); });
    EXPECT_FALSE(ftp_.GetFile("/image", target_));
    EXPECT_FALSE(ftp_.IsConnected());
    EXPECT_EQ(Texts(reader_.calls.begin(), reader_.calls.begin() + 3),
              (Texts{"start ftp://upd:pw@site/image -> " + target_, "cancel *", "close"}));
    runtime_.at(runtime_.ms() + 50, [&] { ftp_.Disconnect(); });
    EXPECT_FALSE(ftp_.Connect());
    EXPECT_TRUE(local_.names().empty());
}

TEST_F(FTPDownloadTest, WaitEndsAfter30000SecondsOfOneDay) {
    const struct {
        double start;  // of the day, in seconds
        int ms;
        bool isFetched;
    } kDownloads[] = {{36000, 30'000'000, true}, {36000, 30'000'020, false}, {86390, 30'000'020, true}};
    for (const auto& download : kDownloads) {
        FakeRuntime runtime;
        FakeAsyncReader reader(runtime);
        FTPDownload ftp(reader, runtime);
        runtime.secondsOfDayAtStart(download.start);
        ftp.HostName("site");
        reader.answers["ftp://:@site/image"] = {"x", download.ms};
        EXPECT_EQ(ftp.GetFile("/image", target_), download.isFetched);
        EXPECT_EQ(!ftp.failure(), download.isFetched);
        EXPECT_FALSE(reader.isReading());
    }
}

}  // namespace
}  // namespace corvane::fakes
