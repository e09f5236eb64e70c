// A whole import. The first byte of the input chooses how: two bits for the accounts' mode, one for the fields', the
// others for the way of combining and what becomes of the file. What follows is the file.
#include "fuzz/FuzzHost.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tallybook;
  if (size == 0) return 0;
  const unsigned choice = data[0];
  fuzz::FuzzHost host;
  host.files.Put(fuzz::kFile, std::string(fuzz::AsBytes(data + 1, size - 1)));
  DefinitionRecord definition;
  definition.AcctMatch = static_cast<Integer>(-static_cast<int>(choice % 3));
  definition.AcctAll = 101;
  definition.FldMatch = (choice & 4U) != 0 ? kOneForOne : kManually;
  definition.Disp = static_cast<Integer>(1 + choice / 64);
  fuzz::Import(host, definition, static_cast<Integer>((choice / 8) % 6));
  return 0;
}
