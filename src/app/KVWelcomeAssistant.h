#pragma once

#include <QPointer>
#include <QString>
#include <QWidget>

class QLabel;
class QPdfDocument;
class QPdfView;
class QPushButton;

namespace tintorra {

// The welcome tour: one window that pages through a PDF of introductory steps, one page at a
// time, and remembers in the settings where the user stopped. There is at most one at a time;
// it deletes itself when closed.
class KVWelcomeAssistant : public QWidget {
    Q_OBJECT

public:
    // The open assistant brought to the front (the name is then ignored), or a new one showing
    // the PDF resource of that name (without extension), which is also the window's title.
    static KVWelcomeAssistant* sharedAssistant(const QString& pdfName);
    // The open assistant, if any.
    static KVWelcomeAssistant* existingAssistant();
    // Registers "showWelcomeWindow" (true) and "lastShownWelcomeStep" (0); the application
    // registers the same pair.
    static void registerDefaults();
    // Where the PDFs are looked for (":/welcome" unless a test points elsewhere).
    static void setDocumentFolder(const QString& folder);

    ~KVWelcomeAssistant() override;

    qint64 currentStep() const { return curStep_; }
    qint64 firstStep() const { return firstStep_; }
    qint64 lastStep() const { return lastStep_; }
    QString pdfName() const { return pdfName_; }
    bool isWindowVisible() const { return isVisible(); }

    QPdfView* pdfView() const { return pdfView_; }
    QPushButton* nextButton() const { return nextButton_; }
    QPushButton* previousButton() const { return prevButton_; }
    QLabel* stepLabel() const { return stepLabel_; }

public slots:
    // Goes to step n, clamped to the document's steps.
    void showStep(qint64 step);
    // "Next", or "Close" on the last step.
    void showNextStep();
    void showPreviousStep();
    // Takes the step from the page the view shows, however it got there.
    void updateStepNumberField();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    explicit KVWelcomeAssistant(const QString& pdfName);
    void buildWindow();
    void loadDocument();
    void sizeToPage();
    void storeCurrentStep();
    // Wheel and page keys inside the view turn pages once the page itself cannot scroll further.
    bool turnPageFromView(int direction);

    static QPointer<KVWelcomeAssistant>& shared();

    QPdfView* pdfView_ = nullptr;
    QPdfDocument* document_ = nullptr;
    QPushButton* nextButton_ = nullptr;
    QPushButton* prevButton_ = nullptr;
    QLabel* stepLabel_ = nullptr;
    qint64 curStep_ = 1;
    const qint64 firstStep_ = 1;
    qint64 lastStep_ = 1;
    const QString pdfName_;
    int wheelRemainder_ = 0;
};

} // namespace tintorra
