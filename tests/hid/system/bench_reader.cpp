#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

#include "bench/ChildProcess.h"
#include "bench/ReaderSocket.h"
#include "models/Device.h"
#include "models/PacedLine.h"
#include "text/HidBench.h"

// Shows a simulated reader to the bench's build of the transport library in the program that it starts as its child:
//
//   bench-reader PROGRAM [ARGUMENT]...
//
// The child asks for plugging as with the mocked reader. Ends with the child's status.

using namespace corvane;

int main(int argc, char** argv) {
    int ends[2];
    if (argc < 2 || ::socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) return 125;
    ::setenv("CORVANE_MOCKED_READER", std::to_string(ends[1]).c_str(), 1);
    try {
        bench::Loop loop;
        models::Device device{{}};
        models::PacedLine line(device);
        models::HidReader reader(line, {});
        bench::ReaderSocket socket(loop, "/tmp/corvane-readers-" + std::to_string(::getpid()));
        socket.add(reader);
        bench::ChildProcess child({argv + 1, argv + argc}, {{hidbench::kSocketVariable, socket.path()}});
        loop.watch(child.descriptor(), [&loop] { loop.stop(); });
        loop.watch(ends[0], [&] {
            char bytes[64] = {};
            if (::read(ends[0], bytes, sizeof bytes - 1) <= 0) return loop.stop();
            if (std::string(bytes) == "unplug\n") device.unplug();
            if (std::string(bytes) == "plug\n") {
                device.plugIn(loop.now());
                reader.restart();
            }
            socket.update();
            if (::write(ends[0], "done\n", 5) < 0) std::perror("bench-reader");
        });
        loop.run();
        return child.status();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench-reader: %s\n", error.what());
        return 125;
    }
}
