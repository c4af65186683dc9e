#include "app/KVWelcomeAssistant.h"

#include "ui/KVSettings.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPdfDocument>
#include <QPdfPageNavigator>
#include <QPdfView>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <algorithm>

namespace tintorra {

namespace {

QString& documentFolder()
{
    static QString folder = QStringLiteral(":/welcome");
    return folder;
}

// One notch of a mouse wheel; touchpads send smaller steps that add up to it.
constexpr int kWheelNotch = 120;

} // namespace

QPointer<KVWelcomeAssistant>& KVWelcomeAssistant::shared()
{
    static QPointer<KVWelcomeAssistant> assistant;
    return assistant;
}

void KVWelcomeAssistant::registerDefaults()
{
    KVSettings::standard().registerDefaults(
        {{kShowWelcomeWindowKey, true}, {kLastShownWelcomeStepKey, 0}});
}

void KVWelcomeAssistant::setDocumentFolder(const QString& folder)
{
    documentFolder() = folder;
}

KVWelcomeAssistant* KVWelcomeAssistant::existingAssistant()
{
    return shared().data();
}

KVWelcomeAssistant* KVWelcomeAssistant::sharedAssistant(const QString& pdfName)
{
    static const bool registered = (registerDefaults(), true);
    Q_UNUSED(registered);
    if (KVWelcomeAssistant* open = shared().data()) {
        open->show();
        open->raise();
        open->activateWindow();
        return open;
    }
    auto* assistant = new KVWelcomeAssistant(pdfName);
    shared() = assistant;
    KVSettings& settings = KVSettings::standard();
    const qint64 stored = settings.value(kLastShownWelcomeStepKey).toLongLong();
    qint64 step = std::clamp(stored, assistant->firstStep_, assistant->lastStep_);
    // Someone who finished the tour and opens it again by hand starts from the beginning.
    if (!settings.boolValue(kShowWelcomeWindowKey) && step == assistant->lastStep_) {
        step = assistant->firstStep_;
    }
    assistant->showStep(step);
    assistant->show();
    assistant->raise();
    assistant->activateWindow();
    return assistant;
}

KVWelcomeAssistant::KVWelcomeAssistant(const QString& pdfName)
    : QWidget(nullptr, Qt::Window), pdfName_(pdfName)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName(QStringLiteral("welcomeAssistant"));
    setWindowTitle(pdfName_);
    buildWindow();
    loadDocument();
    sizeToPage();
    connect(pdfView_->pageNavigator(), &QPdfPageNavigator::currentPageChanged, this,
            &KVWelcomeAssistant::updateStepNumberField);
}

KVWelcomeAssistant::~KVWelcomeAssistant()
{
    if (shared() == this) {
        shared() = nullptr;
    }
}

void KVWelcomeAssistant::buildWindow()
{
    pdfView_ = new QPdfView(this);
    pdfView_->setObjectName(QStringLiteral("welcomePages"));
    pdfView_->setPageMode(QPdfView::PageMode::SinglePage);
    pdfView_->setZoomMode(QPdfView::ZoomMode::Custom);
    pdfView_->setZoomFactor(1.0);
    pdfView_->setPageSpacing(0);
    pdfView_->setDocumentMargins(QMargins());
    pdfView_->setFrameShape(QFrame::NoFrame);
    pdfView_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // The pages are designed for white, whatever the theme.
    QPalette white = pdfView_->palette();
    white.setColor(QPalette::Dark, Qt::white);
    white.setColor(QPalette::Base, Qt::white);
    white.setColor(QPalette::Window, Qt::white);
    pdfView_->setPalette(white);
    pdfView_->setAutoFillBackground(true);
    pdfView_->viewport()->installEventFilter(this);
    pdfView_->installEventFilter(this);
    // The pages are laid out for one size; nothing may scale them.
    connect(pdfView_, &QPdfView::zoomFactorChanged, this, [this](qreal factor) {
        if (factor != 1.0) {
            pdfView_->setZoomFactor(1.0);
        }
    });

    prevButton_ = new QPushButton(tr("Previous"), this);
    prevButton_->setObjectName(QStringLiteral("previousButton"));
    prevButton_->setToolTip(tr("Show the previous step"));
    nextButton_ = new QPushButton(tr("Next"), this);
    nextButton_->setObjectName(QStringLiteral("nextButton"));
    nextButton_->setToolTip(tr("Show the next step; on the last one, close the tour"));
    nextButton_->setDefault(true);
    stepLabel_ = new QLabel(this);
    stepLabel_->setObjectName(QStringLiteral("stepLabel"));
    stepLabel_->setAlignment(Qt::AlignCenter);
    stepLabel_->setToolTip(tr("The step shown and the number of steps"));
    connect(prevButton_, &QPushButton::clicked, this, &KVWelcomeAssistant::showPreviousStep);
    connect(nextButton_, &QPushButton::clicked, this, &KVWelcomeAssistant::showNextStep);

    auto* buttons = new QHBoxLayout;
    buttons->setContentsMargins(12, 8, 12, 12);
    buttons->addWidget(prevButton_);
    buttons->addStretch(1);
    buttons->addWidget(stepLabel_);
    buttons->addStretch(1);
    buttons->addWidget(nextButton_);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(pdfView_, 1);
    column->addLayout(buttons);
}

void KVWelcomeAssistant::loadDocument()
{
    document_ = new QPdfDocument(this);
    // A missing document leaves the view empty with a single step; nobody is told.
    const QString path = documentFolder() + QLatin1Char('/') + pdfName_ + QStringLiteral(".pdf");
    if (document_->load(path) == QPdfDocument::Error::None) {
        lastStep_ = std::max<qint64>(1, document_->pageCount());
    }
    pdfView_->setDocument(document_);
}

void KVWelcomeAssistant::sizeToPage()
{
    // At scale 1 a page point is a point of the screen.
    const QScreen* screen = QGuiApplication::primaryScreen();
    const qreal pixelsPerPoint = screen ? screen->logicalDotsPerInch() / 72.0 : 96.0 / 72.0;
    const QSizeF page = document_->pageCount() > 0 ? document_->pagePointSize(0) : QSizeF();
    const QSize pageSize = page.isValid() ? (page * pixelsPerPoint).toSize() : QSize(640, 480);
    // A pixel to spare for rounding, so that a page never needs a scroll bar at its own size.
    pdfView_->setMinimumSize(pageSize + QSize(2, 2));
}

void KVWelcomeAssistant::showStep(qint64 step)
{
    const qint64 clamped = std::clamp(step, firstStep_, lastStep_);
    if (document_->pageCount() > 0) {
        pdfView_->pageNavigator()->jump(static_cast<int>(clamped - 1), QPointF(), 1.0);
    }
    updateStepNumberField();
}

void KVWelcomeAssistant::updateStepNumberField()
{
    curStep_ = pdfView_->pageNavigator()->currentPage() + 1;
    stepLabel_->setText(tr("%1 of %2").arg(curStep_).arg(lastStep_));
    storeCurrentStep();
    nextButton_->setText(curStep_ >= lastStep_ ? tr("Close") : tr("Next"));
    prevButton_->setEnabled(curStep_ != firstStep_);
}

void KVWelcomeAssistant::showNextStep()
{
    if (curStep_ >= lastStep_) {
        close();
    } else {
        showStep(curStep_ + 1);
    }
    storeCurrentStep();
    // Once the last page has been reached the tour no longer opens by itself.
    if (curStep_ == lastStep_) {
        KVSettings::standard().setValue(kShowWelcomeWindowKey, false);
    }
}

void KVWelcomeAssistant::showPreviousStep()
{
    if (curStep_ > firstStep_) {
        showStep(curStep_ - 1);
    }
    storeCurrentStep();
}

void KVWelcomeAssistant::storeCurrentStep()
{
    KVSettings::standard().setValue(kLastShownWelcomeStepKey, curStep_);
}

void KVWelcomeAssistant::keyPressEvent(QKeyEvent* event)
{
    const bool command = event->modifiers().testFlag(Qt::ControlModifier);
    const bool closeKey =
        event->matches(QKeySequence::Close) || (command && event->key() == Qt::Key_W) ||
        // Delete dismisses the tour on purpose, as does Escape.
        (!command && event->key() == Qt::Key_Delete) || event->key() == Qt::Key_Escape;
    if (closeKey) {
        close();
        return;
    }
    QWidget::keyPressEvent(event);
}

bool KVWelcomeAssistant::turnPageFromView(int direction)
{
    const QScrollBar* bar = pdfView_->verticalScrollBar();
    const bool atEnd =
        direction > 0 ? bar->value() >= bar->maximum() : bar->value() <= bar->minimum();
    const int page = pdfView_->pageNavigator()->currentPage() + direction;
    if (!atEnd || page < 0 || page >= document_->pageCount()) {
        return false;
    }
    pdfView_->pageNavigator()->jump(page, QPointF(), 1.0);
    updateStepNumberField();
    return true;
}

bool KVWelcomeAssistant::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == pdfView_->viewport() && event->type() == QEvent::Wheel) {
        const auto* wheel = static_cast<QWheelEvent*>(event);
        if (wheel->modifiers().testFlag(Qt::ControlModifier)) {
            return true; // no zooming
        }
        wheelRemainder_ += wheel->angleDelta().y();
        if (std::abs(wheelRemainder_) >= kWheelNotch) {
            const int direction = wheelRemainder_ < 0 ? 1 : -1;
            wheelRemainder_ = 0;
            if (turnPageFromView(direction)) {
                return true;
            }
        }
        return false;
    }
    if (watched == pdfView_ && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_PageDown || key == Qt::Key_Space) {
            return turnPageFromView(1);
        }
        if (key == Qt::Key_PageUp) {
            return turnPageFromView(-1);
        }
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace tintorra
