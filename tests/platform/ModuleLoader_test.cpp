#include <gtest/gtest.h>

#include "platform/linux/DlModuleLoader.h"
#include "support/FakeModuleLoader.h"

namespace corvane {
namespace {

int answer() { return 42; }

struct DlSide {
    DlModuleLoader loader;
    std::string path = CORVANE_TEST_MODULE;
};

struct FakeSide {
    fakes::FakeModuleLoader loader;
    std::string path = "/lib/module.so";
    FakeSide() { loader.provide(path, {{"answer", reinterpret_cast<void*>(&answer)}}); }
};

template <typename Side>
class ModuleLoaderContract : public testing::Test {
protected:
    Side side;
};

using Sides = testing::Types<FakeSide, DlSide>;
TYPED_TEST_SUITE(ModuleLoaderContract, Sides);

TYPED_TEST(ModuleLoaderContract, LooksUpInAModuleUntilTheLastReferenceGoes) {
    ModuleLoader& loader = this->side.loader;
    const auto& path = this->side.path;
    EXPECT_EQ(loader.opened(path), nullptr);
    const auto first = loader.open(path);
    ASSERT_NE(first, nullptr) << loader.problem();
    EXPECT_EQ(loader.problem(), "");
    const auto second = loader.opened(path);
    EXPECT_EQ(second, first);
    const auto function = reinterpret_cast<int (*)()>(loader.lookUp(first, "answer"));
    ASSERT_NE(function, nullptr);
    EXPECT_EQ(function(), 42);
    EXPECT_EQ(loader.lookUp(first, "question"), nullptr);
    loader.release(first);
    EXPECT_NE(loader.lookUp(second, "answer"), nullptr);
    loader.release(second);
    EXPECT_EQ(loader.opened(path), nullptr);
}

TYPED_TEST(ModuleLoaderContract, WhatIsNoModuleDoesNotOpen) {
    ModuleLoader& loader = this->side.loader;
    for (const char* path : {"/no/such/module.so", "/proc/self/maps", "libc.so.6"}) {
        EXPECT_EQ(loader.open(path), nullptr) << path;
        EXPECT_NE(loader.problem(), "") << path;
        EXPECT_EQ(loader.opened(path), nullptr) << path;
    }
    EXPECT_EQ(loader.lookUp(nullptr, "answer"), nullptr);
    loader.release(nullptr);
}

}  // namespace
}  // namespace corvane
