#pragma once

#include <QString>
#include <QVariant>
#include <stdexcept>

namespace tintorra {

// Raised when a value reaches code that cannot make sense of it: a programming error, so it is
// not caught where it is raised.
class KVInternalInconsistencyException : public std::logic_error {
public:
    using std::logic_error::logic_error;

    // The message with the value's type name in place of "%@".
    static KVInternalInconsistencyException aboutValue(const char* format, const QVariant& value)
    {
        const QString message = QString::fromUtf8(format).replace(
            QStringLiteral("%@"), QString::fromUtf8(value.typeName()));
        return KVInternalInconsistencyException(message.toStdString());
    }
};

} // namespace tintorra
