#include "Tools/formats/vniwork13/registry.h"

#include <google/protobuf/message.h>
#include <gtest/gtest.h>

#include <climits>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>

namespace vn::iwork13 {
namespace {

using google::protobuf::Message;

// Type id to message of one registry.
using Rows = std::map<int, std::string>;

// The rows of a registry in the checked-in list.
Rows expectedRows(const std::string& registry) {
  std::ifstream file(DORVEX_UNIT_TEST_DATA "/registry_rows.txt");
  EXPECT_TRUE(file.is_open());
  Rows rows;
  for (std::string line; std::getline(file, line);) {
    std::istringstream fields(line);
    std::string name;
    int type = 0;
    std::string message;
    if (fields >> name >> type >> message && name == registry) {
      EXPECT_TRUE(rows.emplace(type, message).second) << line;
    }
  }
  return rows;
}

std::string nameOf(Message* instance) {
  const std::unique_ptr<Message> owner(instance);
  return instance != nullptr ? instance->GetTypeName() : "";
}

// Every id that any registry could hold, and far around.
constexpr int kFirst = -1000;
constexpr int kLast = 20000;

Rows builtRows(const std::function<Message*(int)>& get) {
  Rows rows;
  for (int type = kFirst; type <= kLast; ++type) {
    if (const std::string name = nameOf(get(type)); !name.empty()) rows[type] = name;
  }
  return rows;
}

std::set<int> answeredTypes(const std::function<bool(int)>& has) {
  std::set<int> types;
  for (int type = kFirst; type <= kLast; ++type) {
    if (has(type)) types.insert(type);
  }
  return types;
}

std::set<int> typesOf(const Rows& rows) {
  std::set<int> types;
  for (const auto& [type, message] : rows) types.insert(type);
  return types;
}

std::size_t distinctMessages(const Rows& rows) {
  std::set<std::string> messages;
  for (const auto& [type, message] : rows) messages.insert(message);
  return messages.size();
}

Rows layeredRows(const Rows& own) {
  Rows rows = own;
  rows.merge(expectedRows("common"));
  return rows;
}

const std::set<int> kAnsweredButNotBuilt = {204,  2104, 2117, 5114, 6110,
                                            6207, 6208, 6209, 6210, 6219};

TEST(Registry, BuildsEveryRowAndNothingElse) {
  EXPECT_EQ(builtRows(getCommonRegistryMessage), expectedRows("common"));
  EXPECT_EQ(builtRows(getKeynoteRegistryMessage), expectedRows("keynote"));
  EXPECT_EQ(builtRows(getNumbersRegistryMessage), expectedRows("numbers"));
  EXPECT_EQ(builtRows(getPagesRegistryMessage), expectedRows("pages"));
}

TEST(Registry, HasTheRightSizes) {
  EXPECT_EQ(expectedRows("common").size(), 262U);
  EXPECT_EQ(distinctMessages(expectedRows("common")), 258U);
  EXPECT_EQ(expectedRows("keynote").size(), 61U);
  EXPECT_EQ(distinctMessages(expectedRows("keynote")), 59U);
  EXPECT_EQ(expectedRows("numbers").size(), 24U);
  EXPECT_EQ(distinctMessages(expectedRows("numbers")), 24U);
  EXPECT_EQ(expectedRows("pages").size(), 36U);
  EXPECT_EQ(distinctMessages(expectedRows("pages")), 36U);
  EXPECT_EQ(answeredTypes(commonRegistryHasMessageType).size(), 272U);
}

TEST(Registry, BuildsSo375DistinctMessages) {
  std::set<std::string> messages;
  for (const char* registry : {"common", "keynote", "numbers", "pages"}) {
    for (const auto& [type, message] : expectedRows(registry)) messages.insert(message);
  }
  EXPECT_EQ(messages.size(), 375U);
}

TEST(Registry, AnswersForTheApplicationsExactlyWhereItBuilds) {
  EXPECT_EQ(answeredTypes(keynoteRegistryHasMessageType), typesOf(expectedRows("keynote")));
  EXPECT_EQ(answeredTypes(numbersRegistryHasMessageType), typesOf(expectedRows("numbers")));
  EXPECT_EQ(answeredTypes(pagesRegistryHasMessageType), typesOf(expectedRows("pages")));
}

TEST(Registry, AnswersYesForTenCommonTypesThatItDoesNotBuild) {
  std::set<int> expected = typesOf(expectedRows("common"));
  for (const int type : kAnsweredButNotBuilt) {
    EXPECT_TRUE(expected.insert(type).second) << type;
    EXPECT_EQ(getCommonRegistryMessage(type), nullptr);
    EXPECT_EQ(getKeynoteMessage(type), nullptr);
    EXPECT_EQ(getNumbersMessage(type), nullptr);
    EXPECT_EQ(getPagesMessage(type), nullptr);
  }
  EXPECT_EQ(answeredTypes(commonRegistryHasMessageType), expected);
}

TEST(Registry, LayersTheApplicationOverTheCommonRegistry) {
  EXPECT_EQ(builtRows(getKeynoteMessage), layeredRows(expectedRows("keynote")));
  EXPECT_EQ(builtRows(getNumbersMessage), layeredRows(expectedRows("numbers")));
  EXPECT_EQ(builtRows(getPagesMessage), layeredRows(expectedRows("pages")));
}

TEST(Registry, SelectsTheSameAnswersByRegistry) {
  const std::function<bool(int)> single[] = {
      commonRegistryHasMessageType, keynoteRegistryHasMessageType, numbersRegistryHasMessageType,
      pagesRegistryHasMessageType};
  for (int registry = 0; registry < 4; ++registry) {
    const auto selected = [registry](int type) {
      return registryHasMessageType(static_cast<IWorkRegistryType>(registry), type);
    };
    EXPECT_EQ(answeredTypes(selected), answeredTypes(single[registry]));
  }
  for (const int registry : {4, -1, INT_MAX, INT_MIN}) {
    const auto selected = [registry](int type) {
      return registryHasMessageType(static_cast<IWorkRegistryType>(registry), type);
    };
    EXPECT_TRUE(answeredTypes(selected).empty());
  }
}

TEST(Registry, DoesNotChainTheHasFunctions) {
  EXPECT_FALSE(keynoteRegistryHasMessageType(2001));
  EXPECT_FALSE(registryHasMessageType(KeynoteRegistry, 2001));
  EXPECT_EQ(nameOf(getKeynoteMessage(2001)), "TSWP.StorageArchive");
}

TEST(Registry, KnowsNoExtremeType) {
  for (const int type : {0, -1, -2001, INT_MAX, INT_MIN}) {
    for (auto* get :
         {getCommonRegistryMessage, getKeynoteRegistryMessage, getNumbersRegistryMessage,
          getPagesRegistryMessage, getKeynoteMessage, getNumbersMessage, getPagesMessage})
      EXPECT_EQ(get(type), nullptr);
    for (const IWorkRegistryType registry : getAllRegistryTypes())
      EXPECT_FALSE(registryHasMessageType(registry, type));
  }
}

TEST(Registry, LeavesTheGapsOfKeynote) {
  std::set<int> gaps = {13, 108, 111, 113, 116, 117, 120, 121, 122, 125, 126, 127, 133, 147};
  for (int type = 26; type <= 99; ++type) gaps.insert(type);
  for (const int type : gaps) {
    EXPECT_EQ(getKeynoteRegistryMessage(type), nullptr) << type;
    EXPECT_FALSE(keynoteRegistryHasMessageType(type)) << type;
  }
}

TEST(Registry, GivesTheSameTypeOtherClassesByApplication) {
  EXPECT_EQ(getCommonRegistryMessage(1), nullptr);
  EXPECT_EQ(nameOf(getKeynoteMessage(1)), "KN.DocumentArchive");
  EXPECT_EQ(nameOf(getNumbersMessage(1)), "TN.DocumentArchive");
  EXPECT_EQ(getPagesMessage(1), nullptr);
  EXPECT_EQ(nameOf(getPagesMessage(7)), "TP.PlaceholderArchive");
  EXPECT_EQ(nameOf(getPagesMessage(10011)), "TP.SectionArchive");
  EXPECT_EQ(nameOf(getKeynoteMessage(10011)), "TSWP.SectionPlaceholderArchive");
  EXPECT_EQ(nameOf(getNumbersMessage(10011)), "TSWP.SectionPlaceholderArchive");
}

TEST(Registry, SharesNoTypeBetweenTheCommonRegistryAndTheOthers) {
  for (const char* registry : {"keynote", "numbers", "pages"}) {
    for (const int type : typesOf(expectedRows(registry)))
      EXPECT_FALSE(commonRegistryHasMessageType(type)) << type;
  }
}

TEST(Registry, SharesFiveTypesBetweenTheApplications) {
  std::map<int, int> uses;
  for (const char* registry : {"keynote", "numbers", "pages"}) {
    for (const int type : typesOf(expectedRows(registry))) ++uses[type];
  }
  std::erase_if(uses, [](const auto& use) { return use.second == 1; });
  EXPECT_EQ(uses, (std::map<int, int>{{1, 2}, {2, 2}, {3, 2}, {7, 3}, {10011, 3}}));
}

TEST(Registry, BuildsANewInstanceOnEveryCall) {
  const std::unique_ptr<Message> first(getPagesMessage(2001));
  const std::unique_ptr<Message> second(getPagesMessage(2001));
  EXPECT_NE(first.get(), second.get());
  EXPECT_NE(first.get(),
            &first->GetReflection()->GetMessageFactory()->GetPrototype(first->GetDescriptor())[0]);
}

TEST(Registry, ListsItsKindsInAscendingValue) {
  EXPECT_EQ(getAllRegistryTypes(),
            (std::vector<IWorkRegistryType>{CommonRegistry, KeynoteRegistry, NumbersRegistry,
                                            PagesRegistry}));
  EXPECT_EQ(static_cast<int>(CommonRegistry), 0);
  EXPECT_EQ(static_cast<int>(PagesRegistry), 3);
}

}  // namespace
}  // namespace vn::iwork13
