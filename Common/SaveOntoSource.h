// A save onto the file that the document was opened from. Opening the output empties it, so that the source's
// bytes have to be in memory before; the document goes on with them, and what is saved is what a save elsewhere
// would write.
#pragma once

#include "NitfFile.h"

namespace tavi {

// To be called before the output is opened: takes the source into memory when `path` may name it, by whatever
// spelling or link. Two files are taken for one unless their sizes or their bytes differ; a file that is there
// and cannot be read may be the source as well. ERR_NO_MEMORY and ERR_FILE_READ when the source cannot be taken,
// and then nothing has been touched.
int32_t KeepSourceReadable(NitfFile& document, const wchar_t* path);

// To be called when the output has been opened: lets go of the copy when the source turns out to be untouched.
void DropNeedlessCopy(NitfFile& document);

}  // namespace tavi
