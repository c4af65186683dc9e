#pragma once

#include <QTimer>
#include <QWidget>

namespace tintorra {

// A small spinning indicator that is hidden while stopped.
class KVProgressSpinner : public QWidget {
    Q_OBJECT

public:
    explicit KVProgressSpinner(QWidget* parent = nullptr);

    void startAnimation();
    void stopAnimation();
    bool isAnimating() const { return timer_.isActive(); }

    QSize sizeHint() const override { return {16, 16}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QTimer timer_;
    int step_ = 0;
};

} // namespace tintorra
