#pragma once

#include <QWidget>
#include <optional>

#include "image/MemoryMap.h"

namespace corvane {

/// picMemory, the memory that an image fills as a bar over its addresses: segments filled, gaps hatched.
class MemoryView : public QWidget {
public:
    MemoryView();

    /// Without a map the place stays empty.
    void showMap(const std::optional<MemoryMap>& map);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void paintBar(QPainter& painter, const QRect& bar) const;
    void paintTexts(QPainter& painter, const QRect& line) const;

    std::optional<MemoryMap> map_;
};

}  // namespace corvane
