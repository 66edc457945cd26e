#pragma once

#include "Bench.h"

#include <QStringList>

// The database the printing operations share: a demo company of 1,000 persons beside the benchmark's
// own, each person given a photo.
namespace zq::bench::print {

ConnectionSettings scratch(const Context& c);
// Where an operation writes its PDF.
QString pdfPath(const Context& c);
// Makes the company once and gives every person a photo; opens rawDatabase() on it.
void prepare(Context& c);
// The bare driver's connection on it, for the baselines.
QSqlDatabase rawDatabase();
// The floor of printing persons: every column of every person read through the bare driver, in
// code order, and every photo decoded.
void readPersonsAndPhotos();

// conn() on the scratch database for the length of a run.
class OnScratch {
public:
    explicit OnScratch(const Context& c);
    ~OnScratch();
    OnScratch(const OnScratch&) = delete;
    OnScratch& operator=(const OnScratch&) = delete;

private:
    ConnectionSettings m_back;
    QStringList m_items;
};

} // namespace zq::bench::print
