// A look at an exchange file by a definition of a book: what the file, the definition and the book's tables say
// (QdxLook), and what the rules of the host say besides, of the book's history and of the file itself.
#pragma once

#include "base/Types.h"
#include "tallybook/application/WholeFiles.h"
#include "tallybook/engine/Book.h"
#include "tallybook/inspect/Finding.h"
#include "tallybook/inspect/QdxLook.h"

namespace tallybook::inspect {

struct DefinedLookRequest {
  Text file;
  Integer definition = 0;  // its number
  Integer math = static_cast<Integer>(eMath::mAdd);
};

// Tells `listener` as LookAtQdx does, and behind it what the host's rules say. Nothing of the book, its companions and
// the file is changed.
//   files  those of the installed platform
//   fails  as LookAtQdx, NeedDefinition and ImportHistory
QdxLookTally LookByDefinition(application::WholeFiles& files, engine::Book& book, const DefinedLookRequest& request,
                              FindingListener& listener);

}  // namespace tallybook::inspect
