#pragma once

#include <functional>
#include <QString>

namespace zq {

// Documents kept outside the database by path: report references, meeting papers, the archive.

// Shows a document in the desktop's application for its type. False when the path is empty, the
// file is missing or nothing could be started; the caller stays silent about it.
bool OpenDocument(const QString& path);

// What OpenDocument hands the file to; tests install one so that nothing is launched. An empty
// function brings back the desktop.
using DocumentOpener = std::function<bool(const QString& path)>;
void setDocumentOpener(DocumentOpener opener);

// The whole plain text of a document: .txt (UTF-8, else GB18030), .docx, .odt and .doc (the versions
// before 1997 through a converter, when one is installed). Paragraphs end with a carriage return, as a word processor hands
// its text over (ClipTextLines cuts at them). Empty for a missing file or a format that cannot be
// read.
QString ReadDocumentText(const QString& path);

// The text of a plain text file's bytes: UTF-8 when they are valid UTF-8, else GB18030.
QString DecodePlainText(const QByteArray& bytes);

} // namespace zq
