#pragma once

// The generator's own parts, shared by its source files only.

#include "Demo.h"

#include <QDate>
#include <QSqlQuery>
#include <QStringList>
#include <QVariant>
#include <random>
#include <vector>

namespace zq::demo::kit {

// Each table draws from its own stream, so that a change to one table leaves the others as they were.
// Distributions are worked out here rather than by the standard library, whose results differ
// between library versions.
class Rng {
public:
    Rng(quint32 seed, quint32 stream);
    quint32 next() { return m_engine(); }
    // lo..hi, both included.
    int between(int lo, int hi);
    double real(); // [0, 1)
    bool chance(double p) { return real() < p; }
    // An index drawn with the given weights.
    int weighted(const std::vector<int>& weights);
    template <typename List> const auto& pick(const List& list) {
        return list[between(0, int(list.size()) - 1)];
    }
    QDate date(const QDate& from, const QDate& to); // both included
    QString digits(int n);

private:
    std::mt19937 m_engine;
};

// Inserts rows with bound values through a prepared statement of several rows, inside the caller's
// transaction.
class Writer {
public:
    // columns: the names, comma-separated.
    Writer(Connection& c, const QString& table, const QString& columns);
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    // A null text goes in as '' (a blank box); a null QVariant() as NULL (a value never written).
    Writer& operator<<(const QString& v) {
        m_values.emplace_back(v.isNull() ? blankText() : v);
        return *this;
    }
    Writer& operator<<(const QVariant& v) {
        m_values.push_back(v);
        return *this;
    }
    Writer& operator<<(int v) { return *this << QVariant(v); }
    Writer& operator<<(double v) { return *this << QVariant(v); }
    // Ends the row whose values were given.
    void row();
    // Writes what is pending; gives the rows written.
    qint64 finish();
    const QString& table() const { return m_table; }

private:
    static const QString& blankText();
    void flush(int rows);
    QString statement(int rows) const;

    Connection& m_c;
    QString m_table;
    QStringList m_columns;
    int m_perStatement = 1;
    QSqlQuery m_query;
    std::vector<QVariant> m_values;
    qint64 m_rows = 0;
};

// ---- The company in memory -----------------------------------------------------------------

struct City {
    QString province; // 湖南省
    QString name;     // 长沙市
    QString origin;   // 湖南长沙, as the native place is written
    QString region;   // six digits of the identity card
    QString district; // 芙蓉区
    int weight = 1;   // how many of the staff come from there
};

struct Dept {
    QString code;
    QString name;
    int level = 1; // 1 top
    int parent = -1;
    int top = 0; // index into the kinds of top departments
    bool leaf = true;
    int head = -1;  // post index
    int staff = -1; // post index
    int serving = 0;
    double quota = 0;
    QString duties;
};

struct Post {
    QString code;
    QString name;
    int dept = 0;
    bool head = false;
    QString category; // 职员类别
    QString wage;     // 工资级别
    int serving = 0;
};

struct Person {
    QString code;
    QString name;
    QString idCard;
    QDate birth;
    QDate hire;
    QDate leave; // null while serving
    int state = 1;
    int dept = 0;
    int post = 0;
    int education = 0; // index into educations(), 0 highest
    int city = 0;
    int marital = 0; // index into the marital list: 0 single, 1 married, 2 divorced, 3 widowed
    int lodging = 0; // index into lodgings(): 0 the dormitory
    int room = -1;   // index into the rooms
    bool male = true;
    int transfer = -1; // index into the transfers
    QString school;    // the last one
    QString major;
    QString spouse; // name, when married
    QDate spouseBirth;
};

struct Room {
    QString code;
    QString name;
    int kind = 0;  // 0 a class of rooms, 1 men, 2 women
    int limit = 0; // beds
    QString note;
};

struct Transfer {
    int person = 0;
    int fromDept = 0;
    int fromPost = 0;
    QDate date;
};

struct Company {
    QString name;
    QDate today;
    std::vector<Dept> depts;
    std::vector<Post> posts;
    std::vector<Person> persons;
    std::vector<Room> rooms;
    std::vector<Transfer> transfers;
    std::vector<int> heads; // persons who head a department
};

// Streams of the random numbers, one a table.
enum Stream : quint32 {
    sDepts = 1,
    sPersons,
    sBasic,
    sRooms,
    sFamily,
    sStudy,
    sWork,
    sWorkState,
    sResult,
    sTech,
    sMeed,
    sRemark,
    sDetail,
    sMove,
    sTools,
    sGoods,
    sCard,
    sReports,
    sMeetings,
    sNews,
    sFiles,
};

// ---- Words -------------------------------------------------------------------------------

struct TopDept {
    QString name;
    QString stem;      // the name of its sub-departments begin with it
    QStringList sub;   // suffix of a sub-department at levels 2, 3 and 4
    QStringList heads; // title of the head at levels 1 to 4
    QString staff;     // title of the staff post
    QString category;  // staff category of that post
    QString duties;
};

const std::vector<TopDept>& topDepts();
const std::vector<City>& cities();
const QStringList& surnames();
const QStringList& maleGiven();
const QStringList& femaleGiven();
QString cnNumber(int n);         // 1..99 in Chinese numerals
const QStringList& educations(); // highest first, as the brief list has them
const std::vector<int>& educationWeights();
const QStringList& universities();
const QStringList& colleges();
const QStringList& majors();
const QStringList& vocationalMajors();
const QStringList& nations();
const QStringList& politics();
const QStringList& maritals();
const QStringList& languages();
const QStringList& languageLevels();
const QStringList& titles();
const QStringList& teams();
const QStringList& wages();
const QStringList& branches();
const QStringList& lodgings();
const QStringList& healths();
const QStringList& talents();
const QStringList& leaveReasons(); // state 2..7
const QStringList& firmWords();
const QStringList& firmTrades();
const QStringList& jobs();
const QStringList& jobWorks();
const QStringList& courses();
const QStringList& trainers();
const QStringList& achievements();
const QStringList& rewards();
const QStringList& rewardKinds();
const QStringList& penalties();
const QStringList& penaltyKinds();
const QStringList& appraisals();
const QStringList& hobbies();
const QStringList& arts();
const QStringList& prizes();
const QStringList& activities();
const QStringList& roads();
const QStringList& tools();
const QStringList& goods();
const QStringList& useKinds();
const QStringList& cardNames();
const QStringList& cardIssuers(); // in the order of cardNames()
const QStringList& feeKinds();
const QStringList& reportTitles();
const QStringList& reportBodies();
const QStringList& meetingTitles();
const QStringList& meetingBodies();
const QStringList& notices();
const QStringList& roomNotes();
const QStringList& relations();

// ---- Helpers -----------------------------------------------------------------------------

// The empty text, as the screens write a blank box: '' in the row, not null.
inline const QString& blank() {
    static const QString b = QStringLiteral("");
    return b;
}

inline QString iso(const QDate& d) {
    return d.isValid() ? d.toString(Qt::ISODate) : QString();
}
// yyyy-mm of a date.
inline QString yearMonth(const QDate& d) {
    return d.toString(QStringLiteral("yyyy-MM"));
}
QString period(const QDate& from, const QDate& to); // 2005-09至2009-07
QDate graduation(const Person& p);                  // from the last school
QString surnameOf(const QString& name);
QString personName(Rng& r, bool male);
QString mobile(Rng& r);
QString address(Rng& r, const City& c);
// Identity card number of a person born on the day, in the region; the serial is drawn.
QString idCard(Rng& r, const QString& region, const QDate& birth, bool male);

// What every table writer works from.
struct Context {
    Connection& c;
    const Company& co;
    const Options& options;
    Summary& summary;
    Rng rng(Stream s) const { return Rng(options.seed, s); }
    // Finishes the table and records it in the summary and tells the caller.
    void done(Writer& w);
};

// Tables written after the persons (DemoRecords.cpp, DemoOffice.cpp).
void writeFamily(Context& x);
void writeStudy(Context& x);
void writeWork(Context& x);
void writeWorkState(Context& x);
void writeResults(Context& x);
void writeTech(Context& x);
void writeMeed(Context& x);
void writeRemarks(Context& x);
void writeDetails(Context& x);
void writeMoves(Context& x);
void writeLoans(Context& x);
void writeCards(Context& x);
void writeOffice(Context& x);
void writeDocuments(Context& x);

} // namespace zq::demo::kit
