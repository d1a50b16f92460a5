#include <QApplication>
#include <clocale>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    std::setlocale(LC_NUMERIC, "C");
    QApplication::setStyle("Fusion");
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
