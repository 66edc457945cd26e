#pragma once

#include <QByteArray>
#include <QFile>
#include <QList>
#include <QString>
#include <QTest>
#include <utility>
#include <zip.h>

namespace zq::test {

inline void writeFile(const QString& path, const QByteArray& bytes) {
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write(bytes);
}

// A zip container with the given members, as a word processor writes its documents.
inline void writeZip(const QString& path, const QList<std::pair<const char*, QByteArray>>& members) {
    int error = 0;
    zip_t* z = zip_open(QFile::encodeName(path).constData(), ZIP_CREATE | ZIP_TRUNCATE, &error);
    QVERIFY(z);
    for (const auto& [name, data] : members) {
        zip_source_t* src = zip_source_buffer(z, data.constData(), zip_uint64_t(data.size()), 0);
        QVERIFY(src);
        QVERIFY(zip_file_add(z, name, src, ZIP_FL_ENC_UTF_8) >= 0);
    }
    QCOMPARE(zip_close(z), 0); // the buffers are read here, while the members still live
}

} // namespace zq::test
