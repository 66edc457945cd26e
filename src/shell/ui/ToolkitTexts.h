#pragma once

#include <QString>

namespace zq {

// The toolkit's own texts (file dialog, colour and print dialogs, the standard buttons) in the
// language of the control: 0 simplified, 1 traditional Chinese. Loads the translations once per
// language and replaces those of the other one; true when they are in force. The locale follows,
// so that dates and sizes in those dialogs read as the user expects.
bool InstallToolkitTexts(qint16 language);
// The folder the toolkit's translations are read from.
QString ToolkitTextsFolder();

} // namespace zq
