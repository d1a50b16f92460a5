#include <gtest/gtest.h>

#include "platform/linux/DlModuleLoader.h"
#include "support/FakeModuleLoader.h"

namespace corvane {
namespace {

int answer() { return 42; }

void keepsTheContract(ModuleLoader& loader, const std::string& path) {
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
    for (const char* none : {"/no/such/module.so", "/proc/self/maps", "libc.so.6"}) {
        EXPECT_EQ(loader.open(none), nullptr) << none;
        EXPECT_NE(loader.problem(), "") << none;
        EXPECT_EQ(loader.opened(none), nullptr) << none;
    }
    EXPECT_EQ(loader.lookUp(nullptr, "answer"), nullptr);
    loader.release(nullptr);
}

TEST(ModuleLoaderContract, HoldsForBoth) {
    fakes::FakeModuleLoader fake;
    fake.provide("/lib/module.so", {{"answer", reinterpret_cast<void*>(&answer)}});
    keepsTheContract(fake, "/lib/module.so");
    DlModuleLoader real;
    keepsTheContract(real, CORVANE_TEST_MODULE);
}

}  // namespace
}  // namespace corvane
