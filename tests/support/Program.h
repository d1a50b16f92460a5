#pragma once

#include "support/AppBench.h"
#include "window/presenter/MainPresenter.h"

namespace corvane::fakes {

/// The program in virtual time, over a bench that outlives it: it starts with what that holds and ends with this.
struct Program {
    explicit Program(AppBench& theBench) : bench(theBench) { presenter.load(); }
    ~Program() { updater.shutDown(); }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// Off line with this image picked.
    bool loadImage(const std::string& content = kImage) {
        presenter.optLine_Click(true);
        return presenter.loadFile(bench.folder.folder.file("local.hex", content));
    }

    /// A run; its log is in the face.
    Outcome start(bool force = false) {
        bench.face.log.clear();
        return presenter.start(force);
    }

    AppBench& bench;
    Updater updater{bench.platform(), bench.face.face()};
    MainPresenter presenter{updater};
};

}  // namespace corvane::fakes
