#include "DemoKit.h"

#include "shell/DbError.h"

#include <QSqlError>

namespace zq::demo::kit {

Rng::Rng(quint32 seed, quint32 stream) {
    std::seed_seq s{seed, stream, 0x7a71u};
    m_engine.seed(s);
}

int Rng::between(int lo, int hi) {
    if (hi <= lo) return lo;
    const quint64 span = quint64(hi - lo) + 1;
    return lo + int((quint64(next()) * span) >> 32);
}

double Rng::real() {
    return double(next()) / 4294967296.0;
}

int Rng::weighted(const std::vector<int>& weights) {
    int total = 0;
    for (int w : weights)
        total += w;
    int r = between(0, total - 1);
    for (int i = 0; i < int(weights.size()); ++i) {
        if (r < weights[i]) return i;
        r -= weights[i];
    }
    return int(weights.size()) - 1;
}

QDate Rng::date(const QDate& from, const QDate& to) {
    if (to <= from) return from;
    return QDate::fromJulianDay(from.toJulianDay() + between(0, int(to.toJulianDay() - from.toJulianDay())));
}

QString Rng::digits(int n) {
    QString s(n, QLatin1Char('0'));
    for (int i = 0; i < n; ++i)
        s[i] = QLatin1Char(char('0' + between(0, 9)));
    return s;
}

// ---- Writer ----------------------------------------------------------------------------------

namespace {
// Several rows a statement: one round trip for many on the server, fewer calls on the file.
constexpr int kValuesPerStatement = 1000;
} // namespace

Writer::Writer(Connection& c, const QString& table, const QString& columns)
    : m_c(c)
    , m_table(table)
    , m_columns(columns.split(QLatin1Char(',')))
    , m_query(c.database()) {
    // The company is written in one transaction of the caller's, so that it is all there or not at all.
    if (!c.inTransaction()) throw DbError(QStringLiteral("%1: 演示数据须在事务中写入").arg(table));
    m_perStatement = std::max(1, kValuesPerStatement / int(m_columns.size()));
    m_values.reserve(size_t(m_perStatement) * m_columns.size());
    const QString sql = statement(m_perStatement);
    if (!m_query.prepare(sql)) throw DbError(m_query.lastError().text(), sql);
}

const QString& Writer::blankText() {
    return blank();
}

QString Writer::statement(int rows) const {
    const QString one = QLatin1Char('(') +
                        QStringList(m_columns.size(), QStringLiteral("?")).join(QLatin1Char(',')) +
                        QLatin1Char(')');
    return QStringLiteral("insert into %1 (%2) values %3")
        .arg(m_table, m_columns.join(QLatin1Char(',')), QStringList(rows, one).join(QLatin1Char(',')));
}

void Writer::row() {
    if (m_values.size() % m_columns.size() != 0)
        throw DbError(QStringLiteral("%1: 一行的值数目不对").arg(m_table));
    if (int(m_values.size() / m_columns.size()) == m_perStatement) flush(m_perStatement);
}

void Writer::flush(int rows) {
    if (rows == 0) return;
    QSqlQuery tail(m_c.database());
    QSqlQuery* q = &m_query;
    if (rows != m_perStatement) {
        const QString sql = statement(rows);
        if (!tail.prepare(sql)) throw DbError(tail.lastError().text(), sql);
        q = &tail;
    }
    for (size_t i = 0; i < m_values.size(); ++i)
        q->bindValue(int(i), m_values[i]);
    if (!q->exec()) throw DbError(q->lastError().text(), q->lastQuery());
    m_values.clear();
    m_rows += rows;
}

qint64 Writer::finish() {
    flush(int(m_values.size() / m_columns.size()));
    m_query.finish();
    return m_rows;
}

// ---- Helpers ---------------------------------------------------------------------------------

QString period(const QDate& from, const QDate& to) {
    return yearMonth(from) + QStringLiteral("至") + yearMonth(to);
}

QString personName(Rng& r, bool male) {
    // Surnames by a falling weight: the first is about forty times as frequent as the last.
    const QStringList& s = surnames();
    const double x = r.real();
    const QString& surname = s.at(std::min(int(s.size()) - 1, int(x * x * s.size())));
    const QStringList& given = male ? maleGiven() : femaleGiven();
    QString name = surname + r.pick(given);
    if (r.chance(0.72)) name += r.pick(given);
    return name;
}

QString mobile(Rng& r) {
    static const int prefixes[] = {130, 131, 132, 133, 135, 136, 137, 138, 139, 150, 151, 152, 155,
                                   158, 159, 176, 177, 180, 181, 186, 187, 188, 189, 198, 199};
    return QString::number(prefixes[r.between(0, int(std::size(prefixes)) - 1)]) + r.digits(8);
}

QString address(Rng& r, const City& c) {
    return c.name + c.district + r.pick(roads()) + QString::number(r.between(1, 399)) + QStringLiteral("号");
}

QString idCard(Rng& r, const QString& region, const QDate& birth, bool male) {
    int serial = r.between(0, 499) * 2; // the last digit of the serial is odd for a man
    if (male) ++serial;
    const QString first17 = region + birth.toString(QStringLiteral("yyyyMMdd")) +
                            QStringLiteral("%1").arg(serial, 3, 10, QLatin1Char('0'));
    return first17 + idCardCheckDigit(first17);
}

} // namespace zq::demo::kit

namespace zq::demo {

QChar idCardCheckDigit(QStringView first17) {
    static const int weights[17] = {7, 9, 10, 5, 8, 4, 2, 1, 6, 3, 7, 9, 10, 5, 8, 4, 2};
    static const char checks[] = "10X98765432";
    int sum = 0;
    for (int i = 0; i < 17 && i < first17.size(); ++i)
        sum += (first17.at(i).unicode() - '0') * weights[i];
    return QLatin1Char(checks[sum % 11]);
}

bool idCardValid(QStringView number) {
    if (number.size() != 18) return false;
    for (int i = 0; i < 17; ++i)
        if (!number.at(i).isDigit() || number.at(i).unicode() > '9') return false;
    return number.at(17) == idCardCheckDigit(number.left(17));
}

} // namespace zq::demo
