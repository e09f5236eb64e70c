#include "qdx/Body.h"

namespace tallybook {

void PutBlockEnd(FileStream& stream) {
  PutItem(stream, BodyDate{});
}

void PutBodyEnd(FileStream& stream) {
  PutItem(stream, BodyBlockStart{});
}

}  // namespace tallybook
