// The reader of an exchange file's body: the input stands behind a header that the book itself has written.
#include "exchange/CDataExchange.h"
#include "fuzz/FuzzHost.h"

namespace {

using namespace tallybook;

// The header that the book writes: a whole file of a book without figures, less its body of a block for each account
// and the end mark, 8 bytes each.
std::string Header(fuzz::FuzzHost& host) {
  CDataExchange exchange(host.factory);
  exchange.SetOwner(&host.book);
  const Single version = 1.0F;
  if (!exchange.WriteQDXFile(fuzz::kFile, host.book.FirstDate(), host.book.LastDate(), false, version)) std::abort();
  const std::string file = host.files.Bytes(fuzz::kFile);
  const auto body = static_cast<std::size_t>(8 * (host.book.NumAccounts() + 1));
  return file.substr(0, file.size() - body);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::FuzzHost host;
  static const std::string header = Header(host);
  host.files.Put(fuzz::kFile, header + std::string(fuzz::AsBytes(data, size)));
  DefinitionRecord definition;
  definition.AcctMatch = kOneForOne;
  definition.FldMatch = kOneForOne;
  definition.Disp = kDispKeep;
  fuzz::Import(host, definition, static_cast<Integer>(eMath::mAdd));
  return 0;
}
