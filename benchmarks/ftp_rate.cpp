// The rate of a download over loopback beside that of the curl command on the same file, and how long closing a
// session with a silent server takes. Not a test: times depend on the machine. Usage: bench_ftp_rate [MiB]

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <spawn.h>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <vector>

#include "ftp/FTPDownload.h"
#include "platform/linux/transfer/CurlAsyncReader.h"
#include "support/ScratchFolder.h"
#include "support/SiteProcess.h"

namespace {

using namespace corvane;
using Clock = std::chrono::steady_clock;

constexpr int kRounds = 7;

double secondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

long peakKiB() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

double curlSeconds(const std::string& host, const std::string& target, const std::string& authorities = {}) {
    std::string url = "ftp://upd:pw@" + host + "/big", output = target, file = authorities;
    char name[] = "curl", quiet[] = "-s", option[] = "-o", tls[] = "--ssl-reqd", vouching[] = "--cacert";
    char* arguments[] = {name,     quiet,       option, output.data(), url.data(), authorities.empty() ? nullptr : tls,
                         vouching, file.data(), nullptr};
    const auto start = Clock::now();
    pid_t process = 0;
    int status = 0;
    if (posix_spawnp(&process, name, nullptr, nullptr, arguments, environ) != 0) return 0;
    waitpid(process, &status, 0);
    return status == 0 ? secondsSince(start) : 0;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// Both rates of an encrypted session, this program's beside the command's.
bool printEncrypted(const fakes::ScratchFolder& root, const fakes::ScratchFolder& local, int mib) {
    constexpr int kFew = 7;
    const auto certificate = local.path() + ".pem";
    fakes::SiteProcess site("ftp_site.py", R"({"root": ")" + root.path() +
                                               R"(", "accounts": {"upd": "pw"}, "tls": {"file": ")" + certificate +
                                               R"(", "name": "127.0.0.1", "days": 1, "patient": true}})");
    LinuxRuntime runtime;
    CurlAsyncReader reader(runtime);
    reader.route({.encryption = SiteRoute::Encryption::required, .authorities = certificate});
    FTPDownload ftp(reader, runtime);
    ftp.HostName(site.address());
    ftp.Username("upd");
    ftp.Password("pw");
    if (!ftp.Connect()) return false;
    std::vector<double> own, command;
    for (int round = 0; round < kFew; ++round) {
        command.push_back(curlSeconds(site.address(), local.at("curl"), certificate));
        std::filesystem::remove(local.at("curl"));
        const auto start = Clock::now();
        if (!ftp.GetFile("/big", local.at("own"))) return false;
        own.push_back(secondsSince(start));
        std::filesystem::remove(local.at("own"));
    }
    std::filesystem::remove(certificate);
    std::printf("encrypted      %8.1f MiB/s\n", mib / median(own));
    std::printf("encrypted ratio %8.2f\n", median(command) / median(own));
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    const int mib = argc > 1 ? std::atoi(argv[1]) : 256;
    const fakes::ScratchFolder root, local;
    {
        std::string piece(1 << 20, 'x');
        std::FILE* file = std::fopen(root.at("big").c_str(), "wb");
        for (int i = 0; i < mib; ++i) {
            for (std::size_t at = 0; at < piece.size(); at += 64) piece[at] = static_cast<char>(std::rand());
            std::fwrite(piece.data(), 1, piece.size(), file);
        }
        std::fclose(file);
    }
    fakes::SiteProcess site("ftp_site.py", R"({"root": ")" + root.path() + R"(", "accounts": {"upd": "pw"}})");
    LinuxRuntime runtime;
    CurlAsyncReader reader(runtime);
    FTPDownload ftp(reader, runtime);
    ftp.HostName(site.address());
    ftp.Username("upd");
    ftp.Password("pw");
    if (!ftp.Connect()) return 1;
    double longestDispatch = 0;
    auto lastPump = Clock::now();
    runtime.setPump([&] {
        longestDispatch = std::max(longestDispatch, secondsSince(lastPump));
        lastPump = Clock::now();
    });
    std::vector<double> own, command;
    const long before = peakKiB();
    for (int round = 0; round < kRounds; ++round) {
        command.push_back(curlSeconds(site.address(), local.at("curl")));
        std::filesystem::remove(local.at("curl"));
        const auto start = lastPump = Clock::now();
        if (!ftp.GetFile("/big", local.at("own"))) return 1;
        own.push_back(secondsSince(start));
        std::filesystem::remove(local.at("own"));
    }
    std::printf("curl command   %8.1f MiB/s\n", mib / median(command));
    std::printf("this program   %8.1f MiB/s\n", mib / median(own));
    std::printf("ratio          %8.2f\n", median(command) / median(own));
    std::printf("memory         %8ld KiB more at its peak than before\n", peakKiB() - before);
    std::printf("longest wait   %8.1f ms between two pumps of the face's events\n", longestDispatch * 1000);
    if (!printEncrypted(root, local, mib)) return 1;
    site.freeze();
    const auto start = Clock::now();
    ftp.Disconnect();
    std::printf("closing        %8.2f ms with a silent server\n", secondsSince(start) * 1000);
    site.thaw();
    return site.sees("QUIT") ? 0 : 1;
}
