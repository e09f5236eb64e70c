#include <gmock/gmock.h>

#include "base/Bytes.h"
#include "platform/Platform.h"
#include "support/Registry.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::NotNull;
using ::testing::VariantWith;

constexpr const char* kScratch = "BrennockSoftware_Vedrix";
constexpr const char* kPolicyBelowScratch =
    "BrennockSoftware_Vedrix\\Software\\Microsoft\\Windows\\CurrentVersion\\Policies\\ComDlg32";

std::string NumberBytes(Long number) {
  const auto bytes = ToBytes(number);
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

class RegistryTest : public ::testing::Test {
 protected:
  RegistryTest() {
    store_.AddValue(kLocalMachineKey, "Software\\Shop", "Name", kTextValue, std::string("North\0", 6));
    store_.AddValue(kLocalMachineKey, "Software\\Shop", "Count", kNumberValue, NumberBytes(-7));
    for (const char* const name : {"Alpha", "Beta", "Gamma"})
      store_.Add(kLocalMachineKey, Text("Software\\Shop\\") + name);
    registry_.SetKeyName("Software\\Shop");
  }

  // The key opened for reading.
  void Open() {
    Long access = 0;
    ASSERT_EQ(registry_.OpenKey(access), 0);
    store_.ForgetCalls();
  }

  std::string Stored(const Text& name) const {
    const ScriptedRegistry::Value* const value = store_.Find(kLocalMachineKey, "Software\\Shop", name);
    if (value == nullptr) return "(none)";
    return {reinterpret_cast<const char*>(value->bytes.data()), value->bytes.size()};
  }

  ScriptedPlatform platform_;
  ScriptedRegistry& store_ = platform_.registry;
  Registry registry_;
};

// --- The key ---------------------------------------------------------------------------------------------------------

TEST_F(RegistryTest, StartsAtTheLocalMachineWithoutAPath) {
  const Registry fresh;
  EXPECT_EQ(fresh.Root(), static_cast<Long>(0x80000002));
  EXPECT_EQ(fresh.KeyName(), "");
  EXPECT_EQ(fresh.OpenHandle(), 0);
}

TEST_F(RegistryTest, AnAccessOfZeroBecomesReadingAndIsWrittenBack) {
  Long access = 0;
  EXPECT_EQ(registry_.OpenKey(access), 0);
  EXPECT_EQ(access, 0x20019);
  access = 0x20006;
  EXPECT_EQ(registry_.OpenKey(access), 0);
  EXPECT_EQ(access, 0x20006);
  EXPECT_THAT(store_.Calls(), ElementsAre("OpenKey 80000002 Software\\Shop 20019", "CloseKey #101",
                                          "OpenKey 80000002 Software\\Shop 20006"));
}

TEST_F(RegistryTest, AKeyThatIsNotThereGivesTheStatusAndStaysClosed) {
  registry_.SetKeyName("Software\\None");
  Long access = 0;
  EXPECT_EQ(registry_.OpenKey(access), ScriptedRegistry::kNotFound);
  EXPECT_EQ(registry_.OpenHandle(), 0);
}

TEST_F(RegistryTest, ThePresentRootOrPathKeepsTheKeyOpenAndAnotherClosesIt) {
  Open();
  registry_.SetRoot(kLocalMachineKey);
  registry_.SetKeyName("Software\\Shop");
  EXPECT_EQ(store_.OpenHandles(), 1U);
  registry_.SetKeyName("Software");
  EXPECT_EQ(store_.OpenHandles(), 0U);
  Open();
  registry_.SetRoot(kCurrentUserKey);
  EXPECT_EQ(store_.OpenHandles(), 0U);
  EXPECT_EQ(registry_.Root(), kCurrentUserKey);
}

TEST_F(RegistryTest, TheEndOfTheObjectClosesItsKey) {
  {
    Registry other;
    other.SetKeyName("Software");
    Long access = 0;
    EXPECT_EQ(other.OpenKey(access), 0);
    EXPECT_EQ(store_.OpenHandles(), 1U);
  }
  EXPECT_EQ(store_.OpenHandles(), 0U);
}

// --- Subkeys ---------------------------------------------------------------------------------------------------------

TEST_F(RegistryTest, SubkeysComeOneByOneAndAtTheEndNothingComes) {
  Open();
  EXPECT_EQ(registry_.EnumKey(), "Alpha");
  EXPECT_EQ(registry_.EnumKey(), "Beta");
  EXPECT_EQ(registry_.EnumKey(), "Gamma");
  EXPECT_EQ(registry_.EnumKey(), "");
  EXPECT_EQ(registry_.EnumKey(), "");
  EXPECT_EQ(store_.Calls().back(), "EnumerateKey #101 3");  // the place stays
}

TEST_F(RegistryTest, WithoutAnOpenKeyThereAreNoSubkeys) {
  EXPECT_EQ(registry_.EnumKey(), "");
  EXPECT_THAT(store_.Calls(), IsEmpty());
}

TEST_F(RegistryTest, OpeningClosingWritingAndDeletingBeginTheListAnew) {
  const auto second = [&] {
    EXPECT_EQ(registry_.EnumKey(), "Alpha");
    EXPECT_EQ(registry_.EnumKey(), "Beta");
  };
  Text text = "x";
  Open();
  second();
  EXPECT_EQ(registry_.SetStringValue("Other", text), 0);
  second();
  EXPECT_EQ(registry_.SetLongValue("Other", 1), 0);
  second();
  store_.Deny("CreateKey");
  EXPECT_NE(registry_.SetStringValue("Other", text), 0);
  second();
  EXPECT_NE(registry_.SetLongValue("Other", 1), 0);
  second();
  EXPECT_FALSE(registry_.DeleteKey("Software\\Shop", "None"));
  second();
  registry_.CloseKey();
  Open();
  second();
}

TEST_F(RegistryTest, AValueThatIsNotThereBeginsTheListAnewAndOneThatIsDoesNot) {
  Open();
  EXPECT_EQ(registry_.EnumKey(), "Alpha");
  EXPECT_EQ(registry_.StringValue("Name"), "North");
  EXPECT_EQ(registry_.EnumKey(), "Beta");
  EXPECT_EQ(registry_.StringValue("None"), "");
  EXPECT_EQ(registry_.EnumKey(), "Alpha");
}

// --- Reading ---------------------------------------------------------------------------------------------------------

TEST_F(RegistryTest, ValuesAreReadWithTheKeyOpenedOnNeed) {
  EXPECT_EQ(registry_.StringValue("Name"), "North");
  EXPECT_EQ(registry_.LongValue("Count"), -7);
  EXPECT_EQ(store_.OpenHandles(), 1U);
  EXPECT_EQ(store_.Calls().front(), "OpenKey 80000002 Software\\Shop 20019");
}

TEST_F(RegistryTest, ATextComesInItsWholeLengthFromAQueryAndCutAtTheZeroAsAValue) {
  store_.AddValue(kLocalMachineKey, "Software\\Shop", "Two", kTextValue, std::string("a\0b\0", 4));
  Open();
  Registry::Value value;
  EXPECT_EQ(registry_.QueryValueEx(registry_.OpenHandle(), "Two", value), 0);
  EXPECT_THAT(value, VariantWith<Text>(Text("a\0b\0", 4)));
  EXPECT_EQ(registry_.StringValue("Two"), "a");
}

TEST_F(RegistryTest, ATextIsReadThroughTheCodePage) {
  store_.AddValue(kLocalMachineKey, "Software\\Shop", "Euro", kTextValue, std::string("\x80 \xE4\0", 4));
  EXPECT_EQ(registry_.StringValue("Euro"), "\xE2\x82\xAC \xC3\xA4");
}

TEST_F(RegistryTest, AnEmptyTextIsEmpty) {
  store_.AddValue(kLocalMachineKey, "Software\\Shop", "Empty", kTextValue, "");
  EXPECT_EQ(registry_.StringValue("Empty"), "");
}

TEST_F(RegistryTest, BytesAreReadAsANumber) {
  store_.AddValue(kLocalMachineKey, "Software\\Shop", "Raw", kBinaryValue, NumberBytes(0x01020304));
  EXPECT_EQ(registry_.LongValue("Raw"), 0x01020304);
  store_.AddValue(kLocalMachineKey, "Software\\Shop", "Long", kBinaryValue, "12345");
  EXPECT_EQ(registry_.LongValue("Long"), 0);
}

TEST_F(RegistryTest, ATextAsNumberIsZeroAndANumberAsTextItsDigits) {
  EXPECT_EQ(registry_.LongValue("Name"), 0);
  EXPECT_EQ(registry_.StringValue("Count"), "-7");
}

TEST_F(RegistryTest, OtherKindsOfValuesCannotBeRead) {
  constexpr Long kExpandableText = 2;
  store_.AddValue(kLocalMachineKey, "Software\\Shop", "Path", kExpandableText, "%x%");
  Open();
  Registry::Value value = Long{5};
  EXPECT_EQ(registry_.QueryValueEx(registry_.OpenHandle(), "Path", value), -1);
  EXPECT_EQ(registry_.QueryValueEx(registry_.OpenHandle(), "None", value), -1);
  EXPECT_THAT(value, VariantWith<Long>(5));
  EXPECT_EQ(registry_.StringValue("Path"), "");
}

TEST_F(RegistryTest, AReadThatFailsGivesItsStatusAndTheEmptyValue) {
  Open();
  store_.Deny("QueryValue");
  Registry::Value value;
  EXPECT_EQ(registry_.QueryValueEx(registry_.OpenHandle(), "Name", value), ScriptedRegistry::kDenied);
  EXPECT_EQ(registry_.StringValue("Name"), "");
  EXPECT_EQ(registry_.LongValue("Count"), 0);
}

TEST_F(RegistryTest, AKeyThatCannotBeOpenedHasEmptyValues) {
  registry_.SetKeyName("Software\\None");
  EXPECT_EQ(registry_.StringValue("Name"), "");
  EXPECT_EQ(registry_.LongValue("Count"), 0);
}

// --- Writing ---------------------------------------------------------------------------------------------------------

TEST_F(RegistryTest, AWriteMakesTheKeyAndLeavesTheOpenOneOpen) {
  Open();
  Text text = "South";
  EXPECT_EQ(registry_.SetStringValue("Name", text), 0);
  EXPECT_EQ(registry_.SetLongValue("Count", 258), 0);
  EXPECT_THAT(store_.Calls(),
              ElementsAre("CreateKey 80000002 Software\\Shop 20006", "SetValue #102 Name", "CloseKey #102",
                          "CreateKey 80000002 Software\\Shop 20006", "SetValue #103 Count", "CloseKey #103"));
  EXPECT_EQ(store_.OpenHandles(), 1U);
  EXPECT_EQ(Stored("Name"), std::string("South\0", 6));
  EXPECT_EQ(Stored("Count"), NumberBytes(258));
  registry_.SetKeyName("New\\Branch");
  EXPECT_EQ(registry_.SetStringValue("Name", text), 0);
  EXPECT_TRUE(store_.Has(kLocalMachineKey, "New\\Branch"));
}

TEST_F(RegistryTest, AnEmptyTextIsStoredAsABlankAndTheCallersBecomesOne) {
  Text text;
  EXPECT_EQ(registry_.SetStringValue("Name", text), 0);
  EXPECT_EQ(text, " ");
  EXPECT_EQ(Stored("Name"), std::string(" \0", 2));
  EXPECT_EQ(registry_.StringValue("Name"), " ");
}

TEST_F(RegistryTest, AWriteThatFailsGivesTheStatusAndClosesItsKey) {
  Text text = "South";
  store_.Deny("SetValue");
  EXPECT_EQ(registry_.SetStringValue("Name", text), ScriptedRegistry::kDenied);
  EXPECT_EQ(store_.OpenHandles(), 0U);
  store_.Deny("CreateKey");
  EXPECT_EQ(registry_.SetLongValue("Name", 1), ScriptedRegistry::kDenied);
  EXPECT_EQ(Stored("Name"), std::string("North\0", 6));
}

TEST_F(RegistryTest, ATextThatTheCodePageLacksIsNotWritten) {
  Text text = "\xF0\x9F\x93\x92";
  Open();
  EXPECT_EQ(registry_.EnumKey(), "Alpha");
  EXPECT_NE(registry_.SetStringValue("Name", text), 0);
  EXPECT_EQ(registry_.EnumKey(), "Alpha") << "it is a write all the same";
  EXPECT_EQ(Stored("Name"), std::string("North\0", 6));
}

// --- Deleting --------------------------------------------------------------------------------------------------------

TEST_F(RegistryTest, DeletingTriesTheKeyNamedZeroFirst) {
  EXPECT_TRUE(registry_.DeleteKey("Software\\Shop", "Beta"));
  EXPECT_THAT(store_.Calls(),
              ElementsAre("OpenKey 80000002 Software\\Shop 20019", "DeleteKey 80000002 0", "DeleteKey #101 Beta"));
  EXPECT_FALSE(store_.Has(kLocalMachineKey, "Software\\Shop\\Beta"));
}

TEST_F(RegistryTest, WhereTheKeyNamedZeroCanBeDeletedTheOtherStays) {
  store_.Add(kLocalMachineKey, "0");
  EXPECT_TRUE(registry_.DeleteKey("Software\\Shop", "Beta"));
  EXPECT_FALSE(store_.Has(kLocalMachineKey, "0"));
  EXPECT_TRUE(store_.Has(kLocalMachineKey, "Software\\Shop\\Beta"));
}

TEST_F(RegistryTest, DeletingWhatIsNotThereIsFalse) {
  EXPECT_FALSE(registry_.DeleteKey("Software\\None", "Beta"));
  EXPECT_FALSE(registry_.DeleteKey("Software\\Shop", "None"));
  EXPECT_FALSE(registry_.DeleteKey("Software", "Shop"));  // it has subkeys
  EXPECT_TRUE(store_.Has(kLocalMachineKey, "Software\\Shop"));
}

TEST_F(RegistryTest, DeletingTakesThePlaceOfTheOpenKey) {
  Open();
  EXPECT_TRUE(registry_.DeleteKey("Software", "Shop\\Alpha"));
  EXPECT_EQ(store_.OpenHandles(), 1U);
  EXPECT_EQ(registry_.KeyName(), "Software\\Shop");
  EXPECT_EQ(registry_.EnumKey(), "Shop");  // what is open now is what was opened for the deletion
}

// --- The pair around a dialog ----------------------------------------------------------------------------------------

TEST_F(RegistryTest, TheScratchBranchStandsForTheCurrentUserUntilItIsRedeemed) {
  store_.Add(kCurrentUserKey, "Mine");
  const Long handle = Registry::SettingsforCommonDialog();
  ASSERT_NE(handle, 0);
  EXPECT_EQ(store_.Override(kCurrentUserKey), handle);
  const ScriptedRegistry::Value* const policy = store_.Find(kCurrentUserKey, kPolicyBelowScratch, "NoPlacesBar");
  ASSERT_THAT(policy, NotNull());
  EXPECT_EQ(policy->kind, kNumberValue);
  EXPECT_EQ(FromBytes<Long>(policy->bytes.data()), 1);
  Registry::RedeemRegistry(handle);
  EXPECT_EQ(store_.Override(kCurrentUserKey), 0);
  EXPECT_EQ(store_.OpenHandles(), 0U);
  EXPECT_FALSE(store_.Has(kCurrentUserKey, kScratch));
  EXPECT_TRUE(store_.Has(kCurrentUserKey, "Mine"));
}

TEST_F(RegistryTest, ThePairAsksInThisOrder) {
  const Long handle = Registry::SettingsforCommonDialog();
  Registry::RedeemRegistry(handle);
  EXPECT_THAT(store_.Calls(),
              ElementsAre("CreateKey 80000001 BrennockSoftware_Vedrix 20006", "OverridePredefinedKey 80000001 #101",
                          "CreateKey #101 Software\\Microsoft\\Windows\\CurrentVersion\\Policies\\ComDlg32 20006",
                          "SetValue #102 NoPlacesBar", "CloseKey #102", "OverridePredefinedKey 80000001 0",
                          "CloseKey #101", "DeleteTree 80000001 BrennockSoftware_Vedrix"));
}

TEST_F(RegistryTest, RedeemingNothingEndsTheOverrideAndDeletesNothing) {
  const Long handle = Registry::OverrideCurrentUser();
  ASSERT_NE(handle, 0);
  store_.ForgetCalls();
  Registry::RedeemRegistry(0);
  EXPECT_THAT(store_.Calls(), ElementsAre("OverridePredefinedKey 80000001 0"));
  EXPECT_EQ(store_.Override(kCurrentUserKey), 0);
  EXPECT_TRUE(store_.Has(kCurrentUserKey, kScratch));
}

TEST_F(RegistryTest, AnOverrideThatFailsLeavesTheUsersBranchAndNothingOpen) {
  store_.Deny("OverridePredefinedKey");
  EXPECT_EQ(Registry::OverrideCurrentUser(), 0);
  EXPECT_EQ(Registry::SettingsforCommonDialog(), 0);
  EXPECT_EQ(store_.OpenHandles(), 0U);
  store_.Deny("CreateKey");
  EXPECT_EQ(Registry::OverrideCurrentUser(), 0);
}

TEST_F(RegistryTest, AnOverrideThatCannotBeEndedKeepsItsBranch) {
  const Long handle = Registry::OverrideCurrentUser();
  store_.Deny("OverridePredefinedKey");
  Registry::RedeemRegistry(handle);
  EXPECT_TRUE(store_.Has(kCurrentUserKey, kScratch));
  EXPECT_EQ(store_.OpenHandles(), 1U);
  store_.DenyNothing();
  store_.Deny("CloseKey");
  Registry::RedeemRegistry(handle);
  EXPECT_TRUE(store_.Has(kCurrentUserKey, kScratch));
}

TEST_F(RegistryTest, APolicyThatCannotBeWrittenIsPassedOver) {
  store_.Deny("SetValue");
  const Long handle = Registry::SettingsforCommonDialog();
  EXPECT_NE(handle, 0);
  EXPECT_EQ(store_.Override(kCurrentUserKey), handle);
  Registry::RedeemRegistry(handle);
}

// --- Without a registry ----------------------------------------------------------------------------------------------

TEST_F(RegistryTest, WithoutARegistryNothingIsDoneAndNothingFails) {
  ThePlatform().registry = nullptr;
  Long access = 0;
  Text text;
  Registry::Value value;
  EXPECT_EQ(registry_.OpenKey(access), kNoRegistry);
  EXPECT_EQ(registry_.EnumKey(), "");
  EXPECT_EQ(registry_.QueryValueEx(1, "Name", value), kNoSuchValue);
  EXPECT_EQ(registry_.StringValue("Name"), "");
  EXPECT_EQ(registry_.LongValue("Count"), 0);
  EXPECT_EQ(registry_.SetStringValue("Name", text), kNoRegistry);
  EXPECT_EQ(registry_.SetLongValue("Count", 1), kNoRegistry);
  EXPECT_FALSE(registry_.DeleteKey("Software\\Shop", "Beta"));
  EXPECT_EQ(Registry::OverrideCurrentUser(), 0);
  EXPECT_EQ(Registry::SettingsforCommonDialog(), 0);
  Registry::RedeemRegistry(0);
  Registry::RedeemRegistry(7);
  EXPECT_THAT(store_.Calls(), IsEmpty());
}

}  // namespace
}  // namespace tallybook::testing
