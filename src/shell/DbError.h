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

// A write of a row that another client changed or deleted after this one read it. Nothing was
// written; the user reloads and loses nothing already stored.
class ConflictError : public DbError {
public:
    explicit ConflictError(const QString& message = defaultMessage(), const QString& statement = {})
        : DbError(message, statement) {}
    static QString defaultMessage() {
        return QStringLiteral(
            "此记录在您打开之后已被他人修改或删除，您的修改没有存盘。\n请关闭后重新打开再修改。");
    }
};

// A write that would store a key or unique value a second time: the unique constraint refused it,
// and nothing was written. A new key taken from the present maximum can meet it when another client
// added a row meanwhile; the caller may take the next key and try again.
class DuplicateKeyError : public DbError {
public:
    using DbError::DbError;
};

// The byte conversion of SQLData: a value outside 0..255 overflows.
class OverflowError : public std::overflow_error {
public:
    OverflowError()
        : std::overflow_error("溢出") {}
};

} // namespace zq
