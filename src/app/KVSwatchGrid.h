#pragma once

#include <QColor>
#include <QWidget>
#include <vector>

namespace tintorra {

// The image's main colours as a grid of swatches, each with its value as a tool tip.
class KVSwatchGrid : public QWidget {
    Q_OBJECT

public:
    explicit KVSwatchGrid(QWidget* parent = nullptr);

    void setColors(std::vector<QColor> colors);
    const std::vector<QColor>& colors() const { return colors_; }
    // The swatch under a point, or -1.
    int swatchAt(QPoint point) const;

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;

private:
    QRect swatchRect(int index) const;

    std::vector<QColor> colors_;
    static constexpr int kColumns = 8;
    static constexpr int kSwatch = 24;
    static constexpr int kGap = 4;
};

} // namespace tintorra
