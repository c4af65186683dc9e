#include "ui/KVValueTransformers.h"

#include <QDate>
#include <QDateTime>
#include <QDir>
#include <QFileIconProvider>
#include <QFileInfo>
#include <QFont>
#include <QFontInfo>
#include <QGuiApplication>
#include <QIcon>
#include <QLocale>
#include <QPixmap>

// The transformers that need the windowing side of Qt: icons, fonts and the user's locale.

namespace tintorra {

namespace {

const QSize kIconSize(16, 16);
const QString kNotFoundImage = QStringLiteral(":/images/notfound.svg");

QString expandingTilde(const QString& path)
{
    if (path == QStringLiteral("~"))
        return QDir::homePath();
    if (path.startsWith(QStringLiteral("~/")))
        return QDir::homePath() + path.mid(1);
    return path;
}

// The icon drawn for the screen the program mostly lives on, so it stays sharp on HiDPI.
QPixmap iconPixmap(const QIcon& icon)
{
    return icon.pixmap(kIconSize, qGuiApp->devicePixelRatio());
}

// The calendar date a value stands for: a date as it is, a date-time on the UTC calendar, and
// text by the "yyyy-MM-dd" it starts with.
QDate calendarDate(const QVariant& value)
{
    if (value.typeId() == QMetaType::QDate)
        return value.toDate();
    if (value.typeId() == QMetaType::QDateTime)
        return value.toDateTime().toUTC().date();
    return QDate::fromString(value.toString().left(10), QStringLiteral("yyyy-MM-dd"));
}

} // namespace

KVPathToIconValueTransformer::KVPathToIconValueTransformer()
    : KVValueTransformer(QMetaType::fromType<QPixmap>())
{}

QVariant KVPathToIconValueTransformer::transformedValue(const QVariant& value) const
{
    if (!value.isValid())
        return {};
    const QFileInfo file(expandingTilde(value.toString()));
    if (!file.exists())
        return iconPixmap(QIcon(kNotFoundImage));
    return iconPixmap(QFileIconProvider().icon(file));
}

KVFontNameToDisplayNameTransformer::KVFontNameToDisplayNameTransformer()
    : KVValueTransformer(QMetaType::fromType<QString>())
{}

QVariant KVFontNameToDisplayNameTransformer::transformedValue(const QVariant& value) const
{
    if (!value.isValid())
        return {};
    return QFontInfo(QFont(value.toString(), 12)).family();
}

KVDateToWeekdayValueTransformer::KVDateToWeekdayValueTransformer()
    : KVValueTransformer(QMetaType::fromType<QString>())
{}

QVariant KVDateToWeekdayValueTransformer::transformedValue(const QVariant& value) const
{
    if (!value.isValid())
        return {};
    const QDate date = calendarDate(value);
    if (!date.isValid())
        return {};
    return QLocale().dayName(date.dayOfWeek(), QLocale::LongFormat);
}

} // namespace tintorra
