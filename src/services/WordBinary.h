#pragma once

#include <QByteArray>
#include <QString>

namespace zq {

// The older binary word-processor format (.doc, from the 1997 version on): a compound file holding
// the document stream and its table stream. Read here rather than through a converter because the
// converters lose characters outside the basic plane and keep deleted revisions as text.

enum class WordBinaryResult {
    Read,        // the text was read
    NotWord,     // not a compound file with a document stream of a version read here
    Encrypted,   // protected by a password: there is no text without it
    Broken,      // a compound file that claims to be a document but whose structures do not hold
};

// The text of the main document, then its footnotes, endnotes and text boxes, paragraphs ending
// with carriage returns. Field codes, revisions marked as deleted, pictures and note marks are left
// out; a field's result is read. Headers and comments are not part of the text.
WordBinaryResult ReadWordBinaryText(const QByteArray& file, QString* text);

} // namespace zq
