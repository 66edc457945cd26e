#pragma once

#include <QString>
#include <stdexcept>

namespace zq {

// A failed statement, a refused value or a lost connection. Screens catch it around a save;
// anything uncaught reaches the host as an error of Refresh, as a provider error would.
class DbError : public std::runtime_error {
public:
    explicit DbError(const QString& message, const QString& statement = {})
        : std::runtime_error(message.toStdString())
        , m_message(message)
        , m_statement(statement) {}
    QString message() const { return m_message; }
    QString statement() const { return m_statement; }

private:
    QString m_message;
    QString m_statement;
};

// The byte conversion of SQLData: a value outside 0..255 overflows.
class OverflowError : public std::overflow_error {
public:
    OverflowError()
        : std::overflow_error("溢出") {}
};

} // namespace zq
