#include <gmock/gmock.h>
#include <type_traits>

#include "tallybook/application/FileLayer.h"
#include "tallybook/application/WholeFiles.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::application {
namespace {

using ::testing::ElementsAre;

// Keeps what it is to delete.
class Deletions : public FileLayer {
 public:
  using FileLayer::FileLayer;
  void Delete(const Text& path) override { paths.push_back(path); }
  std::vector<Text> paths;
};

class PlainLayer : public FileLayer {
 public:
  explicit PlainLayer(Deletions& below) : FileLayer(below) {}
};

TEST(FileLayerTest, IsLaidOverAnotherLayerAndHandsOnToIt) {
  testing::ScriptedPlatform platform;
  Deletions below(platform.files);
  PlainLayer(below).Delete("a");
  EXPECT_THAT(below.paths, ElementsAre("a"));
}

TEST(FileLayerTest, IsNeverCopied) {
  EXPECT_FALSE(std::is_copy_constructible_v<FileLayer>);
  EXPECT_FALSE(std::is_copy_constructible_v<WholeFiles>);
  EXPECT_FALSE((std::is_constructible_v<WholeFiles, WholeFiles&>));
}

}  // namespace
}  // namespace tallybook::application
