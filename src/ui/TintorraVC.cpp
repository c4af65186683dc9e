// The panel itself: its controls, how they are bound to the parameters, and what it observes.
#include "ui/TintorraVC.h"

#include "editor/SavedSelectionSets.h"
#include "ui/KVCircularSlider.h"
#include "ui/KVNotificationCenter.h"
#include "ui/KVPixelReadout.h"
#include "ui/KVSavedSetsPopup.h"
#include "ui/KVSelectionSetSaveSheet.h"
#include "ui/KVSettings.h"
#include "ui/KVTenSegmentSlider.h"
#include "ui/KVValueDictionaryVariant.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFontDatabase>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QScrollArea>
#include <QStackedWidget>
#include <QTabWidget>
#include <QToolButton>
#include <QUndoStack>
#include <QVBoxLayout>
#include <algorithm>

namespace tintorra {

namespace {

constexpr int kSelectionRingSide = 150;
constexpr int kTargetRingSide = 120;
constexpr QSize kStraightSliderFrame(220, 24);
// The binding a degree field would have; the arrow keys act on the path it names.
const char* const kValueBindingProperty = "valueBinding";

QGroupBox* groupBox(const QString& title, QWidget* parent)
{
    auto* box = new QGroupBox(title, parent);
    box->setFlat(false);
    return box;
}

KVCircularSlider* straightSlider(const QString& toolTip, QWidget* parent)
{
    auto* slider = new KVCircularSlider(kStraightSliderFrame, parent);
    slider->setMinimumWidth(160);
    slider->setFixedHeight(kStraightSliderFrame.height());
    slider->setToolTip(toolTip);
    return slider;
}

// A target slider shows only its middle, on a scale of -1 to 1 where 0 means no change.
void makeChangeSlider(KVCircularSlider* slider)
{
    KVCircularSliderModel& model = slider->model();
    model.setShowsUpperLowerThumbs(false);
    model.setShowsUpperLowerFalloffThumbs(false);
    model.setShowsValueIndicator(false);
    model.setMinValue(-1.0);
    model.setMaxValue(1.0);
    model.setDefaultValue(0.0);
    model.takeMiddleValue(0.0);
}

QLabel* readoutLabel(QWidget* parent)
{
    auto* label = new QLabel(parent);
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPointSizeF(std::max(7.0, font.pointSizeF() * 0.85));
    label->setFont(font);
    label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

} // namespace

TintorraVC::TintorraVC(Engine& engine, QUndoStack* undoStack, QWidget* parent)
    : QWidget(parent), engine_(engine), undoStack_(undoStack),
      shifter_(engine, [this](std::uint64_t request, Result<KVBitmapPtr> result) {
          KVBitmapPtr bitmap = result ? result.take() : nullptr;
          QMetaObject::invokeMethod(
              this, [this, request, bitmap] { takeShiftResult(request, bitmap); },
              Qt::QueuedConnection);
      })
{
    registerDefaults();
    shifter_.setAbandonsStaleRuns(true);
    // Set up without leaving anything to undo.
    ++undoSuspended_;
    buildPanel();
    bindSliders();
    observeNotifications();
    showParametersInControls();
    updateSourceSatAndBriSliderColors();
    updateTargetSatAndBriSliderColors();
    --undoSuspended_;
}

void TintorraVC::setUndoRegistrationEnabled(bool enabled)
{
    if (enabled)
        undoSuspended_ = std::max(0, undoSuspended_ - 1);
    else
        ++undoSuspended_;
}

TintorraVC::~TintorraVC()
{
    for (DescriptionJob& job : jobs_) {
        job.thread.request_stop();
    }
    jobs_.clear();
    shifter_.withdrawAll();
    delete spectrumView_.data();
}

void TintorraVC::registerDefaults()
{
    static const bool registered = [] {
        QVariantMap selectionSets;
        for (const NamedHue& hue : kNamedHues) {
            const QVariantMap full =
                variantMapFromDictionary(dictionaryFromValues(fullSelectionRange()));
            selectionSets.insert(
                QString::fromStdString(namedHueSetName(hue)),
                QVariantMap{
                    {QLatin1String(kSelectionSetHueKey),
                     variantMapFromDictionary(dictionaryFromValues(namedHueRange(hue.degrees)))},
                    {QLatin1String(kSelectionSetSaturationKey), full},
                    {QLatin1String(kSelectionSetLightnessKey), full},
                });
        }
        KVSettings::standard().registerDefaults({
            {kSavedSetsOfSelectionSettingsKey, selectionSets},
            {kSavedSetsOfTargetSettingsKey, QVariantMap()},
            {kSaveAsFileTypeTagKey, 0},
        });
        return true;
    }();
    Q_UNUSED(registered);
}

// --- The panel -----------------------------------------------------------------------------------

void TintorraVC::buildPanel()
{
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    auto* scroll = new QScrollArea(this);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    outer->addWidget(scroll);
    auto* content = new QWidget(scroll);
    auto* column = new QVBoxLayout(content);
    scroll->setWidget(content);

    // Selection: which colours change.
    QGroupBox* selection = groupBox(tr("Selection"), content);
    auto* selectionLayout = new QVBoxLayout(selection);
    selectionTabView_ = new QStackedWidget(selection);
    selectionLayout->addWidget(selectionTabView_);
    auto* selectionPage = new QWidget(selectionTabView_);
    auto* selectionGrid = new QGridLayout(selectionPage);
    selectionGrid->setContentsMargins(0, 0, 0, 0);
    hueSlider_ = new KVCircularSlider(QSize(kSelectionRingSide, kSelectionRingSide), selectionPage);
    hueSlider_->setObjectName(QStringLiteral("hueSlider"));
    hueSlider_->setFixedSize(kSelectionRingSide, kSelectionRingSide);
    hueSlider_->setToolTip(tr("The hues to change: drag the middle to move the range, the inner "
                              "thumbs for the fully changed hues, the outer ones for the fade"));
    hueSlider_->valueField()->setProperty(kValueBindingProperty,
                                          QStringLiteral("self.hueSlider.middleValue"));
    selectionGrid->addWidget(hueSlider_, 0, 0, 1, 2, Qt::AlignLeft);

    auto* tools = new QVBoxLayout;
    const std::array<std::pair<QString, QString>, 5> toolTexts{{
        {tr("Pick"), tr("Click the image to centre the selection on a colour's hue")},
        {tr("Add"), tr("Click the image to widen the selection to a colour's hue")},
        {tr("Remove"), tr("Click the image to narrow the selection, leaving a colour's hue out")},
        {tr("Target"), tr("Click the image to make a colour's hue the target")},
        {tr("Mask"), tr("Paint on the image the parts that must not change")},
    }};
    for (std::size_t i = 0; i < toolButtons_.size(); ++i) {
        auto* button = new QToolButton(selectionPage);
        button->setText(toolTexts[i].first);
        button->setToolTip(toolTexts[i].second);
        button->setCheckable(true);
        button->setToolButtonStyle(Qt::ToolButtonTextOnly);
        button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        const int tag = static_cast<int>(i) + 1;
        button->setProperty("tag", tag);
        button->setObjectName(QStringLiteral("toolButton%1").arg(tag));
        connect(button, &QToolButton::clicked, this, [this, tag] { pressToolButton(tag); });
        toolButtons_[i] = button;
        tools->addWidget(button);
    }
    tools->addStretch();
    selectionGrid->addLayout(tools, 0, 2);

    satSlider_ = straightSlider(tr("The saturations to change"), selectionPage);
    briSlider_ = straightSlider(tr("The brightnesses to change"), selectionPage);
    satSlider_->setObjectName(QStringLiteral("satSlider"));
    briSlider_->setObjectName(QStringLiteral("briSlider"));
    selectionGrid->addWidget(new QLabel(tr("Saturation"), selectionPage), 1, 0);
    selectionGrid->addWidget(satSlider_, 1, 1, 1, 2);
    selectionGrid->addWidget(new QLabel(tr("Brightness"), selectionPage), 2, 0);
    selectionGrid->addWidget(briSlider_, 2, 1, 1, 2);

    selectionSetsPopup_ = new KVSavedSetsPopup(kSavedSetsOfSelectionSettingsKey, selectionPage);
    selectionSetsPopup_->setObjectName(QStringLiteral("selectionSetsPopup"));
    selectionSetsPopup_->setToolTip(
        tr("Saved selections: choose one to apply it, Alt-choose to delete it"));
    auto* invert = new QPushButton(tr("Invert"), selectionPage);
    invert->setToolTip(tr("Select every hue but the selected ones"));
    connect(invert, &QPushButton::clicked, this, &TintorraVC::invertSourceHueValues);
    selectionGrid->addWidget(new QLabel(tr("Sets"), selectionPage), 3, 0);
    selectionGrid->addWidget(selectionSetsPopup_, 3, 1);
    selectionGrid->addWidget(invert, 3, 2);
    selectionGrid->setColumnStretch(1, 1);
    selectionTabView_->addWidget(selectionPage);

    // The second tab: managing the saved sets.
    auto* managePage = new QWidget(selectionTabView_);
    auto* manageLayout = new QGridLayout(managePage);
    auto* setList = new QListWidget(managePage);
    setList->setObjectName(QStringLiteral("savedSetsList"));
    setList->setToolTip(tr("The saved settings"));
    auto* deleteButton = new QPushButton(tr("Delete"), managePage);
    deleteButton->setToolTip(tr("Delete the chosen saved settings"));
    auto* manageSetsDoneButton = new QPushButton(tr("Done"), managePage);
    manageSetsDoneButton->setObjectName(QStringLiteral("manageSetsDoneButton"));
    manageSetsDoneButton->setToolTip(tr("Back to the selection"));
    manageLayout->addWidget(setList, 0, 0, 1, 2);
    manageLayout->addWidget(deleteButton, 1, 0);
    manageLayout->addWidget(manageSetsDoneButton, 1, 1);
    selectionTabView_->addWidget(managePage);
    connect(deleteButton, &QPushButton::clicked, this, [this, setList] {
        if (setsPopupInUse_ != nullptr && setList->currentItem() != nullptr) {
            setsPopupInUse_->deleteSet(setList->currentItem()->text());
            delete setList->currentItem();
        }
    });
    connect(manageSetsDoneButton, &QPushButton::clicked, this, [this] {
        selectionTabView_->setCurrentIndex(0);
        if (setsPopupInUse_ != nullptr) {
            setsPopupInUse_->clearSelection();
        }
    });
    column->addWidget(selection);

    // Target: where the selection goes.
    QGroupBox* target = groupBox(tr("Target"), content);
    auto* targetGrid = new QGridLayout(target);
    targetHueSlider_ = new KVCircularSlider(QSize(kTargetRingSide, kTargetRingSide), target);
    targetHueSlider_->setObjectName(QStringLiteral("targetHueSlider"));
    targetHueSlider_->setFixedSize(kTargetRingSide, kTargetRingSide);
    targetHueSlider_->setToolTip(tr("The hue the selection moves to"));
    targetHueSlider_->model().setShowsUpperLowerThumbs(false);
    targetHueSlider_->model().setShowsUpperLowerFalloffThumbs(false);
    targetHueSlider_->model().setShowsValueIndicator(false);
    targetHueSlider_->model().setMouseMovedNotificationKey("targetHue");
    targetHueSlider_->valueField()->setProperty(kValueBindingProperty,
                                                QStringLiteral("self.targetHueSlider.middleValue"));
    targetColorWell_ = new QToolButton(target);
    targetColorWell_->setObjectName(QStringLiteral("targetColorWell"));
    targetColorWell_->setText(tr("Colour\u2026"));
    targetColorWell_->setToolTip(tr("Choose the target hue from a colour"));
    connect(targetColorWell_, &QToolButton::clicked, this, [this] {
        const QColor color = QColorDialog::getColor(targetColor_.isValid() ? targetColor_ : Qt::red,
                                                    this, tr("Target Colour"));
        if (color.isValid()) {
            setTargetColor(color);
        }
    });
    targetHoverLabel_ = new QLabel(target);
    targetHoverLabel_->setObjectName(QStringLiteral("targetHoverLabel"));
    targetHoverLabel_->setToolTip(tr("The value under the pointer"));
    auto* wellColumn = new QVBoxLayout;
    wellColumn->addWidget(targetColorWell_);
    wellColumn->addWidget(targetHoverLabel_);
    wellColumn->addStretch();
    targetGrid->addWidget(targetHueSlider_, 0, 0, 1, 2, Qt::AlignLeft);
    targetGrid->addLayout(wellColumn, 0, 2);

    targetSatSlider_ = straightSlider(tr("More or less saturation for the selection; the middle "
                                         "changes nothing"),
                                      target);
    targetSatSlider_->setObjectName(QStringLiteral("targetSatSlider"));
    makeChangeSlider(targetSatSlider_);
    targetSatSlider_->model().setMouseMovedNotificationKey("targetSat");
    targetGrid->addWidget(new QLabel(tr("Saturation"), target), 1, 0);
    targetGrid->addWidget(targetSatSlider_, 1, 1, 1, 2);

    targetBrightnessTabView_ = new QStackedWidget(target);
    targetBriSlider_ = straightSlider(tr("More or less brightness for the selection; the middle "
                                         "changes nothing"),
                                      targetBrightnessTabView_);
    targetBriSlider_->setObjectName(QStringLiteral("targetBriSlider"));
    makeChangeSlider(targetBriSlider_);
    targetTenBriSlider_ = new KVTenSegmentSlider(targetBrightnessTabView_);
    targetTenBriSlider_->setObjectName(QStringLiteral("targetTenBriSlider"));
    targetTenBriSlider_->setToolTip(
        tr("The brightness curve: the new brightness of the selection's darkest to brightest"));
    targetBrightnessTabView_->addWidget(targetBriSlider_);
    targetBrightnessTabView_->addWidget(targetTenBriSlider_);
    auto* brightnessKind = new QComboBox(target);
    brightnessKind->addItems({tr("Brightness"), tr("Curve")});
    brightnessKind->setToolTip(tr("Change the brightness by one amount or along a curve"));
    connect(brightnessKind, &QComboBox::currentIndexChanged, targetBrightnessTabView_,
            &QStackedWidget::setCurrentIndex);
    targetGrid->addWidget(brightnessKind, 2, 0);
    targetGrid->addWidget(targetBrightnessTabView_, 2, 1, 1, 2);

    targetSetsPopup_ = new KVSavedSetsPopup(kSavedSetsOfTargetSettingsKey, target);
    targetSetsPopup_->setObjectName(QStringLiteral("targetSetsPopup"));
    targetSetsPopup_->setToolTip(
        tr("Saved targets: choose one to apply it, Alt-choose to delete it"));
    targetGrid->addWidget(new QLabel(tr("Sets"), target), 3, 0);
    targetGrid->addWidget(targetSetsPopup_, 3, 1, 1, 2);
    targetGrid->setColumnStretch(1, 1);
    column->addWidget(target);

    // Options: how the colours are measured and blended.
    QGroupBox* options = groupBox(tr("Options"), content);
    auto* form = new QFormLayout(options);
    colorModePopup_ = new QComboBox(options);
    colorModePopup_->addItems({tr("LCh (Luv)"), tr("LCh (Lab)"), tr("HCL"), tr("HSB"), tr("HSL")});
    colorModePopup_->setToolTip(tr("The colour model in which hues are measured and moved"));
    maskPopup_ = new QComboBox(options);
    maskPopup_->addItems(
        {tr("Shifted image"), tr("Highlighted selection"), tr("Black mask"), tr("White mask")});
    maskPopup_->setToolTip(tr("What the result shows: the shifted image or the selection"));
    preserveHueBox_ = new QCheckBox(tr("Hue preserving blends"), options);
    preserveHueBox_->setToolTip(tr("Blend partly selected colours without passing other hues"));
    blendBox_ = new QCheckBox(tr("Blend to falloff hues"), options);
    blendBox_->setToolTip(tr("Fade the shift out towards the ends of the fall-offs"));
    gammaField_ = new QDoubleSpinBox(options);
    gammaField_->setRange(1.0, 3.0);
    gammaField_->setSingleStep(0.1);
    gammaField_->setDecimals(2);
    gammaField_->setKeyboardTracking(false);
    gammaField_->setToolTip(tr("The gamma the image's samples are encoded with"));
    form->addRow(tr("Colour mode"), colorModePopup_);
    form->addRow(tr("Show"), maskPopup_);
    form->addRow(preserveHueBox_);
    form->addRow(blendBox_);
    form->addRow(tr("Gamma"), gammaField_);
    connect(colorModePopup_, &QComboBox::currentIndexChanged, this, [this](int model) {
        if (const auto mode = colorSpaceModelFromNumber(model)) {
            setColorSpaceModel(*mode);
        }
    });
    connect(maskPopup_, &QComboBox::currentIndexChanged, this,
            [this](int view) { setMaskToShow(view); });
    connect(preserveHueBox_, &QCheckBox::toggled, this, &TintorraVC::setPreserveHue);
    connect(blendBox_, &QCheckBox::toggled, this, &TintorraVC::setBlendToFalloffHues);
    connect(gammaField_, &QDoubleSpinBox::valueChanged, this, &TintorraVC::setDisplayGamma);
    column->addWidget(options);

    // The pixel under the pointer and the image.
    QGroupBox* readout = groupBox(tr("Pixel"), content);
    auto* readoutGrid = new QGridLayout(readout);
    pixelPropertiesHeader_ = readoutLabel(readout);
    pixelPropertiesHeader_->setText(emptyPixelReadoutHeader());
    pixelPropertiesHeader_->setToolTip(tr("The pixel under the pointer"));
    readoutGrid->addWidget(pixelPropertiesHeader_, 0, 0);
    for (int i = 0; i < 3; ++i) {
        pixelPropertiesColumns_[static_cast<std::size_t>(i)] = readoutLabel(readout);
        readoutGrid->addWidget(pixelPropertiesColumns_[static_cast<std::size_t>(i)], 0, i + 1);
        readoutGrid->setColumnStretch(i + 1, 1);
    }
    sourceRepPropertiesHeader_ = readoutLabel(readout);
    sourceRepPropertiesHeader_->setText(imageInformationHeader());
    sourceRepPropertiesHeader_->setToolTip(tr("The image: size, resolution and profile"));
    sourceRepProperties_ = readoutLabel(readout);
    readoutGrid->addWidget(sourceRepPropertiesHeader_, 1, 0);
    readoutGrid->addWidget(sourceRepProperties_, 1, 1, 1, 3);
    column->addWidget(readout);
    column->addStretch();

    saveSheet_ = new KVSelectionSetSaveSheet(this);
    connect(saveSheet_, &KVSelectionSetSaveSheet::buttonClicked, this,
            &TintorraVC::closeSelectionSetSaveSheet);

    // Owned here but shown by the window, in a pop-up of its own.
    spectrumView_ = new KVLChSpectrumView;
    spectrumView_->setToolTip(tr("The image's colours by hue: click to select a hue, Shift-click "
                                 "to add it, Ctrl-click for the next graph"));
    spectrumView_->setColorSpaceModel(parameters_.colorSpaceModel());
    spectrumView_->setDrawLog(true);
    spectrumView_->setUndoGrouping(
        {[this] { beginUndoGroup(tr("Selection Hue")); }, [this] { endUndoGroup(); }});

    for (QLineEdit* field : {hueSlider_->valueField(), targetHueSlider_->valueField()}) {
        field->installEventFilter(this);
    }
    setMinimumWidth(content->minimumSizeHint().width() + 16);
}

void TintorraVC::bindSliders()
{
    const auto grouping = [this](const QString& actionName) {
        return KVUndoGrouping{[this, actionName] { beginUndoGroup(actionName); },
                              [this] { endUndoGroup(); }};
    };
    hueSlider_->setUndoGrouping(grouping(tr("Selection Hue")));
    satSlider_->setUndoGrouping(grouping(tr("Selection Saturation")));
    briSlider_->setUndoGrouping(grouping(tr("Selection Brightness")));
    targetHueSlider_->setUndoGrouping(grouping(tr("Target Hue")));
    targetSatSlider_->setUndoGrouping(grouping(tr("Target Saturation")));
    targetBriSlider_->setUndoGrouping(grouping(tr("Target Brightness")));
    targetTenBriSlider_->setUndoGrouping(grouping(tr("Target Brightness")));

    const auto rangeBinding = [this](KVCircularSlider* slider, auto setter) {
        connect(slider, &KVCircularSlider::valuesChanged, this,
                [this, setter](const KVSliderValues& values) {
                    if (!updatingControls_) {
                        (this->*setter)(dictionaryFromValues(values));
                    }
                });
    };
    rangeBinding(hueSlider_, &TintorraVC::setSourceHueValues);
    rangeBinding(satSlider_, &TintorraVC::setSourceSatValues);
    rangeBinding(briSlider_, &TintorraVC::setSourceBriValues);
    const auto middleBinding = [this](KVCircularSlider* slider, auto setter) {
        connect(slider, &KVCircularSlider::middleValueChanged, this, [this, setter](double value) {
            if (!updatingControls_) {
                (this->*setter)(value);
            }
        });
    };
    middleBinding(targetHueSlider_, &TintorraVC::setTargetHue);
    middleBinding(targetSatSlider_, &TintorraVC::setTargetSat);
    middleBinding(targetBriSlider_, &TintorraVC::setTargetBri);
    connect(targetTenBriSlider_, &KVTenSegmentSlider::valuesChanged, this,
            [this](const KVValueDictionary& values) {
                if (!updatingControls_) {
                    setTargetBriTenVals(values);
                }
            });

    connect(selectionSetsPopup_, &KVSavedSetsPopup::itemChosen, this,
            &TintorraVC::deselectSelectionTools);
    connect(selectionSetsPopup_, &KVSavedSetsPopup::setChosen, this,
            &TintorraVC::chooseSelectionSet);
    connect(selectionSetsPopup_, &KVSavedSetsPopup::saveRequested, this,
            [this] { openSaveSheet(selectionSetsPopup_); });
    connect(selectionSetsPopup_, &KVSavedSetsPopup::manageRequested, this,
            [this] { openManageTab(selectionSetsPopup_); });
    connect(targetSetsPopup_, &KVSavedSetsPopup::setChosen, this, &TintorraVC::chooseTargetSet);
    connect(targetSetsPopup_, &KVSavedSetsPopup::saveRequested, this,
            [this] { openSaveSheet(targetSetsPopup_); });
    connect(targetSetsPopup_, &KVSavedSetsPopup::manageRequested, this,
            [this] { openManageTab(targetSetsPopup_); });
}

void TintorraVC::observeNotifications()
{
    KVNotificationCenter& center = KVNotificationCenter::defaultCenter();
    center.addObserver(kUserClickedOnLChColorNotification, this,
                       [this](const KVNotification& note) { spectrumClicked(note, false); });
    center.addObserver(kUserShiftClickedOnLChColorNotification, this,
                       [this](const KVNotification& note) { spectrumClicked(note, true); });
    center.addObserver(QStringLiteral("sliderColorGamutDidChange"), this,
                       [this](const KVNotification&) { redrawSliders(); });
    center.addObserver(kMouseMovedOverCircularSliderThumbSlotNotification, this,
                       [this](const KVNotification& note) { targetSliderHovered(note); });
    center.addObserver(kMouseMovedOverTenSegmentSliderThumbSlotNotification, this,
                       [this](const KVNotification& note) { targetSliderHovered(note); });
}

// --- Slider colours ------------------------------------------------------------------------------

void TintorraVC::updateSourceSatAndBriSliderColors()
{
    const double hue = parameters_.sourceHueRange().middle;
    const double wrapped = hue - std::floor(hue);
    satSlider_->setLowerColor(QColor::fromHsvF(static_cast<float>(wrapped), 0.0f, 0.75f));
    satSlider_->setUpperColor(QColor::fromHsvF(static_cast<float>(wrapped), 1.0f, 1.0f));
    briSlider_->setLowerColor(Qt::black);
    briSlider_->setMiddleColor(QColor::fromHsvF(static_cast<float>(wrapped), 1.0f, 0.6f));
    briSlider_->setUpperColor(Qt::white);
}

void TintorraVC::updateTargetSatAndBriSliderColors()
{
    const double hue = parameters_.targetHue() - std::floor(parameters_.targetHue());
    const auto h = static_cast<float>(hue);
    targetSatSlider_->setLowerColor(QColor::fromHsvF(h, 0.0f, 0.75f));
    targetSatSlider_->setMiddleColor(QColor::fromHsvF(h, 0.5f, 0.9f));
    targetSatSlider_->setUpperColor(QColor::fromHsvF(h, 1.0f, 1.0f));
    targetBriSlider_->setLowerColor(Qt::black);
    targetBriSlider_->setMiddleColor(QColor::fromHsvF(h, 1.0f, 0.6f));
    targetBriSlider_->setUpperColor(Qt::white);
    targetTenBriSlider_->setLowerColor(Qt::black);
    targetTenBriSlider_->setMiddleColor(QColor::fromHsvF(h, 1.0f, 0.6f));
    targetTenBriSlider_->setUpperColor(Qt::white);
}

void TintorraVC::redrawSliders()
{
    for (QWidget* slider : findChildren<KVCircularSlider*>()) {
        slider->update();
    }
    targetTenBriSlider_->update();
}

// --- Keyboard nudging
// ------------------------------------------------------------------------------

QString TintorraVC::nudgeKeyPath(const QString& bindingKeyPath)
{
    const qsizetype operatorAt = bindingKeyPath.indexOf(QLatin1String("op_"));
    if (operatorAt >= 0) {
        return bindingKeyPath.mid(operatorAt);
    }
    if (bindingKeyPath == QLatin1String("self.hueSlider.middleValue")) {
        return QStringLiteral("hueSlider.middleValue");
    }
    if (bindingKeyPath == QLatin1String("self.targetHueSlider.middleValue")) {
        return QStringLiteral("targetHueSlider.middleValue");
    }
    return {};
}

bool TintorraVC::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::KeyPress) {
        return QWidget::eventFilter(watched, event);
    }
    const auto* key = static_cast<QKeyEvent*>(event);
    if (key->key() != Qt::Key_Up && key->key() != Qt::Key_Down) {
        return QWidget::eventFilter(watched, event);
    }
    const QString path = nudgeKeyPath(watched->property(kValueBindingProperty).toString());
    KVCircularSlider* ring = path == QLatin1String("hueSlider.middleValue") ? hueSlider_
                             : path == QLatin1String("targetHueSlider.middleValue")
                                 ? targetHueSlider_
                                 : nullptr;
    if (ring == nullptr) {
        return QWidget::eventFilter(watched, event);
    }
    const bool large = key->modifiers().testFlag(Qt::ShiftModifier);
    const KVNudgeCommand command = key->key() == Qt::Key_Up
                                       ? (large ? KVNudgeCommand::upLarge : KVNudgeCommand::up)
                                       : (large ? KVNudgeCommand::downLarge : KVNudgeCommand::down);
    ring->setMiddleValue(KVCircularSliderModel::nudgedValue(ring->middleValue(), command));
    return true;
}

} // namespace tintorra
