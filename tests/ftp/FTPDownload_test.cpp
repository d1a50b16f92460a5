#include "ftp/FTPDownload.h"

#include <gtest/gtest.h>
#include <stdexcept>

#include "support/FakeAsyncReader.h"
#include "support/ScratchFolder.h"

namespace corvane::fakes::tests {

using Texts = std::vector<std::string>;

struct FTPDownloadTest : testing::Test {
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
    EXPECT_TRUE(ftp_.GetFile("/image", target_, true));
    EXPECT_TRUE(reader_.isReading() && runtime_.ms() == 0);
    for (const auto& [address, type] :
         {std::pair("ftp://u%70d:pw@site/image", 1), {"no address", 1}, {"ftp://site/x", 2}}) {
        runtime_.Sleep(1000);
        runtime_.DoEvents();
        EXPECT_FALSE(reader_.isReading());
        ftp_.AsyncRead(address, type, target_);
    }
    EXPECT_EQ(runtime_.ms(), 3000);
    EXPECT_EQ(reader_.calls.at(1), "start ftp://upd:pw@site/image -> " + target_);
    EXPECT_TRUE(events_.empty());
    EXPECT_TRUE(local_.names().empty());
}

TEST_F(FTPDownloadTest, PercentageIsRoundedToEven) {
    Texts percents;
    runtime_.at(50, [&] {
        for (const auto& [read, whole] :
             {std::pair(0LL, 1LL), {1, 8}, {3, 8}, {1999, 2000}, {12, 10}, {5000000000, 10000000000}}) {
            events_.clear();
            reader_.onProgress({read, whole, target_, {}});
            percents.push_back(events_.front());
        }
    });
    ASSERT_TRUE(ftp_.GetFile("/image", target_));
    EXPECT_EQ(percents, (Texts{"0 %", "12 %", "38 %", "100 %", "100 %", "50 %"}));
}

TEST_F(FTPDownloadTest, CancelEndsADownloadAtOnce) {
    local_.file("image", "old");
    for (const auto& property : {std::optional<std::string>(), {target_}, {"other"}}) {
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
    for (const auto& [start, ms, isFetched] :
         {std::tuple(36000.0, 30'000'000, true), {36000, 30'000'020, false}, {86390, 30'000'020, true}}) {
        FakeRuntime runtime;
        FakeAsyncReader reader(runtime);
        FTPDownload ftp(reader, runtime);
        runtime.secondsOfDayAtStart(start);
        ftp.HostName("site");
        reader.answers["ftp://:@site/image"] = {"x", ms};
        EXPECT_EQ(ftp.GetFile("/image", target_), isFetched);
        EXPECT_EQ(!ftp.failure(), isFetched);
    }
}

}  // namespace corvane::fakes::tests
