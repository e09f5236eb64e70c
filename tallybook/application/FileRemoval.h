// Whether a file's name can be taken away, told without doing so: what a look at an import asks before it says that a
// file would be deleted or renamed. One thread.
#pragma once

#include "platform/FileSystem.h"

namespace tallybook::application {

// Fails as `files` would fail to delete or rename the file at `path`, which is there, as far as the system tells it
// beforehand: 75 no regular file, 70 in use here or elsewhere, or a folder that does not let it go.
void NeedRemovable(FileSystem& files, const Text& path);

}  // namespace tallybook::application
