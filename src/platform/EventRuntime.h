#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <utility>
#include <vector>

#include "platform/Runtime.h"

namespace corvane {

/// What every runtime does alike, whatever its clock and its descriptors are: posted handlers, which never run inside
/// one another, polled sources, the face's pump and its idle work. Owns the handlers, and nothing else. What a handler
/// throws leaves DoEvents, and those behind it run in the next one.
class EventRuntime : public Runtime {
public:
    void DoEvents() override;
    void setPump(std::function<void()> pump) override { pump_ = std::move(pump); }
    void setIdle(std::function<void()> idle) override { idle_ = std::move(idle); }
    void post(const void* owner, std::function<void()> handler) override {
        posted_.push_back({owner, std::move(handler)});
    }
    void forget(const void* owner) override;
    void add(PolledSource& source) override { sources_.push_back(&source); }
    void remove(PolledSource& source) override { std::erase(sources_, &source); }

    /// Runs what is due, without the pump; does nothing when a handler calls it.
    void dispatch();

protected:
    /// Takes in what has come until now, without waiting; True when something has. It posts handlers and calls none.
    virtual bool moveIo() = 0;

    /// The start of a wait for activity, in which the face may be idle; True when that has brought something in.
    bool bringsNewsAtOnce();

    /// Something came in.
    void countNews() { ++news_; }

    bool hasSources() const { return !sources_.empty(); }
    bool isAnySourceBusy() const;

    /// True when a source had something new.
    bool serviceSources();

private:
    struct Posted {
        const void* owner;
        std::function<void()> handler;
    };

    std::deque<Posted> posted_;
    std::vector<PolledSource*> sources_;
    std::function<void()> pump_, idle_;
    std::size_t news_ = 0;  // how often something came in
    bool dispatching_ = false;
};

}  // namespace corvane
