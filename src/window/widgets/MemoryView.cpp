#include "window/widgets/MemoryView.h"

#include <QPainter>
#include <algorithm>

#include "window/widgets/Naming.h"

namespace corvane {
namespace {

constexpr int kGap = 2;    // pixels between bar and texts
constexpr int kLeast = 2;  // pixels of a segment, however short it is

}  // namespace

MemoryView::MemoryView() {
    named(this, "picMemory", tr("Memory map"));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void MemoryView::showMap(const std::optional<MemoryMap>& map) {
    map_ = map;
    const auto words = map ? QString::fromStdString(map->words()) : QString();
    setAccessibleDescription(words);
    setToolTip(words);
    update();
}

QSize MemoryView::sizeHint() const {
    const auto metrics = fontMetrics();
    return {24 * metrics.averageCharWidth(), metrics.height() * 2 + kGap};
}

void MemoryView::paintEvent(QPaintEvent* /*event*/) {
    if (!map_) return;
    QPainter painter(this);
    const int height = fontMetrics().height();
    paintBar(painter, {0, 0, width() - 1, height - 1});
    paintTexts(painter, {0, height + kGap, width(), height});
}

void MemoryView::paintBar(QPainter& painter, const QRect& bar) const {
    const auto& colours = palette();
    painter.fillRect(bar, colours.color(QPalette::Base));
    painter.fillRect(bar, QBrush(colours.color(QPalette::Mid), Qt::BDiagPattern));
    const double scale = bar.width() / static_cast<double>(map_->end - map_->first);
    const auto place = [&](std::uint64_t address) {
        return static_cast<int>(static_cast<double>(address - map_->first) * scale);
    };
    for (const auto& segment : map_->segments) {
        const int left = std::min(place(segment.first), bar.width() - kLeast);
        const int right = std::max(place(segment.first + segment.bytes), left + kLeast);
        painter.fillRect(QRect(left, bar.top(), right - left, bar.height()), colours.color(QPalette::Highlight));
    }
    painter.setPen(colours.color(QPalette::Dark));
    painter.drawRect(bar);
}

/// The addresses of both ends, and what there is between them as far as there is room.
void MemoryView::paintTexts(QPainter& painter, const QRect& line) const {
    const auto first = QString::fromStdString(MemoryMap::address(map_->first));
    const auto last = QString::fromStdString(MemoryMap::address(map_->end - 1));
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter, first);
    painter.drawText(line, Qt::AlignRight | Qt::AlignVCenter, last);
    const int edge = painter.fontMetrics().horizontalAdvance(last) + painter.fontMetrics().averageCharWidth();
    const QRect middle = line.adjusted(edge, 0, -edge, 0);
    const auto summary = painter.fontMetrics().elidedText(QString::fromStdString(map_->summary()), Qt::ElideRight,
                                                          std::max(0, middle.width()));
    painter.drawText(middle, Qt::AlignCenter, summary);
}

}  // namespace corvane
