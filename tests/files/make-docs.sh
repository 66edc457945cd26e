#!/bin/sh
# Writes the binary documents the tests read (*.doc) from their flat sources (*.fodt) with another
# maker's word processor, so that the reader is tried on what such a program really writes.
# The files are kept in the repository; run this only to change them.
set -e
cd "$(dirname "$0")"
if ! command -v soffice >/dev/null; then
  apt-get install -y --no-install-recommends libreoffice-writer-nogui
fi
for f in *.fodt; do
  soffice --headless --convert-to 'doc:MS Word 97' "$f" >/dev/null
done
