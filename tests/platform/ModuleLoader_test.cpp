#include <gtest/gtest.h>

#include "platform/linux/DlModuleLoader.h"

namespace corvane {
namespace {

TEST(DlModuleLoader, OpensLooksUpAndReleases) {
    DlModuleLoader loader;
    const std::string path = CORVANE_TEST_MODULE;
    EXPECT_EQ(loader.opened(path), nullptr);
    const auto first = loader.open(path);
    ASSERT_NE(first, nullptr) << loader.problem();
    const auto second = loader.opened(path);
    EXPECT_EQ(second, first);
    EXPECT_NE(loader.lookUp(first, "answer"), nullptr);
    EXPECT_EQ(loader.lookUp(first, "question"), nullptr);
    loader.release(first);
    EXPECT_NE(loader.lookUp(second, "answer"), nullptr);
    loader.release(second);
    EXPECT_EQ(loader.opened(path), nullptr);
    for (const char* none : {"/no/such/module.so", "/proc/self/maps", "libc.so.6"}) {
        EXPECT_EQ(loader.open(none), nullptr) << none;
        EXPECT_NE(loader.problem(), "") << none;
    }
    EXPECT_EQ(loader.lookUp(nullptr, "answer"), nullptr);
    loader.release(nullptr);
}

}  // namespace
}  // namespace corvane
