#include "window/widgets/Tones.h"

namespace corvane {
namespace {

struct Pair {
    QColor onLight, onDark;
};

Pair coloursOf(Card::Tone tone, const QPalette& palette) {
    switch (tone) {
        case Card::Tone::plain:
            break;
        case Card::Tone::busy:
            return {QColor(0x1f, 0x6f, 0x8b), QColor(0x5a, 0xb5, 0xd1)};
        case Card::Tone::good:
            return {QColor(0x1b, 0x6e, 0x3c), QColor(0x5c, 0xc4, 0x83)};
        case Card::Tone::caution:
            return {QColor(0x9a, 0x62, 0x00), QColor(0xf2, 0xb6, 0x32)};
        case Card::Tone::danger:
            return {QColor(0xb3, 0x26, 0x1e), QColor(0xff, 0x8a, 0x78)};
    }
    const auto quiet = mixed(palette.color(QPalette::Window), palette.color(QPalette::WindowText), 0.55);
    return {quiet, quiet};
}

}  // namespace

QColor toneColour(Card::Tone tone, const QPalette& palette) {
    const auto pair = coloursOf(tone, palette);
    const bool isDark = palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
    return isDark ? pair.onDark : pair.onLight;
}

QColor mixed(const QColor& one, const QColor& other, double share) {
    const auto part = [share](float a, float b) { return static_cast<float>(a + (b - a) * share); };
    return QColor::fromRgbF(part(one.redF(), other.redF()), part(one.greenF(), other.greenF()),
                            part(one.blueF(), other.blueF()));
}

QColor lineColour(const QPalette& palette) {
    constexpr double kShare = 0.35;
    return mixed(palette.color(QPalette::Window), palette.color(QPalette::WindowText), kShare);
}

}  // namespace corvane
