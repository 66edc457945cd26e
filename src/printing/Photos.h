#pragma once

#include <functional>
#include <QString>
#include <QVector>

namespace zq {

class Recordset;

// Photos leave the database in chunks of this many bytes, so no photo needs one fetch of its size.
constexpr qint64 kPhotoChunk = 102400;

// The sizes in which a field of `size` bytes is written: the remainder first (possibly 0), then each
// whole chunk.
QVector<qint64> photoChunks(qint64 size);

// Writes field 0 of the recordset's current row to `path` (an existing file is replaced): -1 when a
// file was written, 0 when the field is empty.
int SaveChunksToFile(Recordset& rs, const QString& path);

// The work file of the photo in hand: tmpPhoto in PowerPath (the temporary folder when PowerPath is
// not set).
QString photoFilePath();

// The picture box of the master record screen, which ExportPhotos fills: told the empty text to empty
// itself, then the file to load.
using PhotoBox = std::function<void(const QString& fileName)>;
void setPhotoBox(PhotoBox box);

// Writes the photo of CurPersonCode to the work file and shows it in the picture box. A person
// without a photo leaves the box empty.
void ExportPhotos();

} // namespace zq
