#include "qm_ordering/lists/PersonalLists.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <memory>

#include "qm_ordering/foundation/LastFailure.h"
#include "qm_ordering/platform/ado/embedded/EmbeddedSession.h"
#include "qm_ordering/platform/value/Failure.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/FailureOf.h"
#include "tests/support/RaisedNumber.h"
#include "tests/support/StoreFixture.h"
#include "tests/support/StrictXml.h"

namespace {

using qm_ordering::OrderItem;
using qm_ordering::PersonalList;
using qm_ordering::PersonalLists;
using test::RaisedNumber;
using test::Rows;
namespace failure = qm_ordering::failure;

class PersonalListsTest : public test::StoreFixture {
 protected:
  static void Add(std::int32_t lvListID, const std::string& zvItemNumber, const std::string& zvNotes = "") {
    const auto oItem = std::make_shared<OrderItem>();
    oItem->ItemNumber(zvItemNumber);
    oItem->CustomerNotes(zvNotes);
    oItem->Quantity(2);
    PersonalList list;
    list.AddItem(oItem, lvListID);
    ASSERT_EQ(0, list.Error().Number) << list.Error().Description;
  }

  std::string File() const { return Folder.File("PersonalLists.xml"); }

  static void Save() {
    PersonalLists lists;
    lists.LoadLists();
    qm_ordering::ClearLastFailure();
    lists.SaveAsXML();
  }

  PersonalLists Lists;
};

}  // namespace

TEST_F(PersonalListsTest, OfAnEmptyStoreAreNoneAndAnEmptyElement) {
  Lists.LoadLists();
  EXPECT_EQ(0, Lists.Count());
  EXPECT_EQ("<personallists/>", Lists.GetXML());
  Save();
  EXPECT_EQ("<personallists/>", test::ReadFile(File()));
}

TEST_F(PersonalListsTest, ComeByNameAndAreFoundByTheirIds) {
  EXPECT_EQ(1, Lists.CreateList("b"));
  EXPECT_EQ(2, Lists.CreateList("a"));
  EXPECT_EQ(0, Lists.Count()) << "what is created is held by a new object";
  PersonalLists loaded;
  loaded.LoadLists();
  std::string zNames;
  for (const auto& oList : loaded.NewEnum()) {
    zNames += oList->Name() + std::to_string(oList->ListID()) + " ";
  }
  EXPECT_EQ("a2 b1 ", zNames);
  EXPECT_EQ("b", loaded.Item(1)->Name());
  EXPECT_EQ(failure::kInvalidCall, RaisedNumber([&] { return loaded.Item(3); }));
  EXPECT_EQ(
      "<personallists><personallist id=\"2\" name=\"a\"/><personallist id=\"1\" name=\"b\"/></personallists>",
      loaded.GetXML());
}

TEST_F(PersonalListsTest, PassTheStoresAnswersOn) {
  EXPECT_EQ(1, Lists.CreateList("Tools"));
  EXPECT_EQ(2, Lists.CreateList("Paint"));
  EXPECT_EQ("Tools", Lists.GetName(1));
  EXPECT_EQ("", Lists.GetName(7));
  EXPECT_TRUE(Lists.ListExists("TOOLS"));
  EXPECT_FALSE(Lists.ListExists("Nails"));
  EXPECT_TRUE(Lists.RenameList(1, "Nails"));
  EXPECT_FALSE(Lists.RenameList(2, "nails"));
  EXPECT_EQ(3, Lists.CreateList("NAILS")) << "replaces the list of that name";
  EXPECT_TRUE(Lists.RemoveListByName("paint"));
  Lists.RemoveList(3);
  EXPECT_EQ("0", Store.Value("select count(*) from tblPersonalList"));
}

TEST_F(PersonalListsTest, StayAsTheyWereLoadedWhenTheStoreIsChanged) {
  Lists.CreateList("a");
  Lists.CreateList("b");
  Lists.LoadLists();
  EXPECT_TRUE(Lists.RenameList(1, "c"));
  Lists.RemoveList(2);
  EXPECT_EQ(2, Lists.Count());
  EXPECT_EQ("a", Lists.Item(1)->Name());
  EXPECT_EQ("b", Lists.Item(2)->Name());
  EXPECT_TRUE(Lists.RemoveListByName("c"));
  EXPECT_EQ(2, Lists.Count());
}

TEST_F(PersonalListsTest, AnswerNothingWhereTheStoreFails) {
  Store.Run("alter table tblPersonalList rename to gone");
  EXPECT_EQ("", Lists.GetName(1));
  EXPECT_FALSE(Lists.ListExists("a"));
  EXPECT_EQ(0, Lists.CreateList("a"));
  EXPECT_FALSE(Lists.RenameList(1, "a"));
  Lists.RemoveList(1);
  EXPECT_FALSE(Lists.RemoveListByName("a"));
  EXPECT_EQ("Database.PersonalLists_RemoveListByName", qm_ordering::LastFailure().Operation);
  EXPECT_EQ(failure::kStoreNoTable, RaisedNumber([&] {
              Lists.LoadLists();
              return 0;
            }));
}

TEST_F(PersonalListsTest, RaiseWhenTheyAreLoadedTwice) {
  Lists.CreateList("a");
  Lists.LoadLists();
  EXPECT_EQ(failure::kDuplicateKey, RaisedNumber([&] {
              Lists.LoadLists();
              return 0;
            }));
  EXPECT_EQ(1, Lists.Count());
}

TEST_F(PersonalListsTest, AreWrittenToTheFileWithTheirItems) {
  const std::string zAwkward = "Bob's \"<\xC3\x89lite>\" \xF0\x9F\x94\xA7 & " + std::string(300, 'x');
  Lists.CreateList(zAwkward);
  Lists.CreateList("Empty");
  Add(1, "A-1", "second\tline\nbreak");
  Add(1, "B-2");
  Save();
  EXPECT_EQ(0, qm_ordering::LastFailure().Number) << qm_ordering::LastFailure().Description;
  const test::XmlElement root = test::ReadStrictly(test::ReadFile(File()));
  EXPECT_EQ("personallists", root.Name);
  ASSERT_EQ(2U, root.Children.size());
  EXPECT_EQ(zAwkward, root.Children[0].Attributes.at("name"));
  EXPECT_EQ("1", root.Children[0].Attributes.at("id"));
  ASSERT_EQ(2U, root.Children[0].Children.size());
  EXPECT_EQ("orderitem", root.Children[0].Children[0].Name);
  EXPECT_EQ("A-1", root.Children[0].Children[0].Attributes.at("itemnumber"));
  EXPECT_EQ("second\tline\nbreak", root.Children[0].Children[0].Attributes.at("customernotes"));
  EXPECT_EQ("2", root.Children[0].Children[0].Attributes.at("quantity"));
  EXPECT_EQ("B-2", root.Children[0].Children[1].Attributes.at("itemnumber"));
  EXPECT_EQ("Empty", root.Children[1].Attributes.at("name"));
  EXPECT_TRUE(root.Children[1].Children.empty());
  struct stat status {};
  ASSERT_EQ(0, stat(File().c_str(), &status));
  EXPECT_EQ(0600U, status.st_mode & 0777U);
}

TEST_F(PersonalListsTest, AreWrittenOnceByAnObjectAndThenNotAnymore) {
  Lists.CreateList("a");
  Add(1, "A-1");
  PersonalLists loaded;
  loaded.LoadLists();
  loaded.SaveAsXML();
  const std::string zFirst = test::ReadFile(File());
  Add(1, "B-2");
  loaded.SaveAsXML();
  EXPECT_EQ(failure::kDuplicateKey, qm_ordering::LastFailure().Number);
  EXPECT_EQ("PersonalLists.SaveAsXML", qm_ordering::LastFailure().Operation);
  EXPECT_EQ(zFirst, test::ReadFile(File()));
}

TEST_F(PersonalListsTest, LeaveTheOldFileWhenTheyCannotBeWritten) {
  test::WriteFile(File(), "the old one");
  Lists.CreateList("a");
  Add(1, "A-1");
  Store.Run("update tblPersonalListItem set zCustomerNotes = 'x' || char(1)");
  Save();
  EXPECT_EQ(failure::kXmlCharacter, qm_ordering::LastFailure().Number);
  EXPECT_EQ("the old one", test::ReadFile(File()));
}

TEST_F(PersonalListsTest, LeaveTheOldFileWhenTheStoreFailsForTheItems) {
  test::WriteFile(File(), "the old one");
  Lists.CreateList("a");
  Lists.LoadLists();
  Store.Run("alter table tblPersonalListItem rename to gone");
  Lists.SaveAsXML();
  EXPECT_EQ(failure::kStoreNoTable, qm_ordering::LastFailure().Number);
  EXPECT_EQ("PersonalLists.SaveAsXML", qm_ordering::LastFailure().Operation);
  EXPECT_EQ("the old one", test::ReadFile(File()));
}

TEST(PersonalListsWithoutFolder, AreNotWrittenToTheRootFolder) {
  const test::SettingsScope settings;
  PersonalLists lists;
  qm_ordering::ClearLastFailure();
  lists.SaveAsXML();
  EXPECT_EQ(failure::kPathNotFound, qm_ordering::LastFailure().Number);
  EXPECT_NE(std::string::npos, qm_ordering::LastFailure().Description.find("OrderingDatabasePath"));
  EXPECT_FALSE(std::filesystem::exists("/PersonalLists.xml"));
}

TEST_F(PersonalListsTest, AreWrittenByTheIdThatTheHeldListHasNow) {
  Lists.CreateList("a");
  PersonalLists loaded;
  loaded.LoadLists();
  loaded.Item(1)->ListID(9);
  loaded.SaveAsXML();
  EXPECT_EQ(failure::kInvalidCall, qm_ordering::LastFailure().Number);
  EXPECT_FALSE(std::filesystem::exists(File()));
}

TEST_F(PersonalListsTest, LeaveTheOldFileWhenAListHasNoCollectionOfItems) {
  test::WriteFile(File(), "the old one");
  Lists.CreateList("a");
  PersonalLists loaded;
  loaded.LoadLists();
  loaded.Item(1)->OrderItems(nullptr);
  loaded.SaveAsXML();
  EXPECT_EQ(failure::kObjectNotSet, qm_ordering::LastFailure().Number);
  EXPECT_EQ("PersonalLists.SaveAsXML", qm_ordering::LastFailure().Operation);
  EXPECT_EQ("the old one", test::ReadFile(File()));
}

TEST_F(PersonalListsTest, AreWrittenAfterANameThatXMLCannotHoldIsPutRight) {
  Lists.CreateList("a");
  Lists.CreateList("b");
  Add(1, "A-1");
  PersonalLists loaded;
  loaded.LoadLists();
  loaded.Item(2)->Name("b\x01");
  loaded.SaveAsXML();
  EXPECT_EQ(failure::kXmlCharacter, qm_ordering::LastFailure().Number);
  EXPECT_EQ(0, loaded.Item(1)->OrderItems()->Count()) << "no list has taken its items";
  loaded.Item(2)->Name("b");
  qm_ordering::ClearLastFailure();
  loaded.SaveAsXML();
  EXPECT_EQ(0, qm_ordering::LastFailure().Number) << qm_ordering::LastFailure().Description;
  EXPECT_EQ(2U, test::ReadStrictly(test::ReadFile(File())).Children.size());
}

TEST_F(PersonalListsTest, SayInWhichListAndItemATextIsThatXMLCannotHold) {
  Lists.CreateList("Tools");
  Lists.CreateList("Paint");
  Add(1, "A-1");
  Add(1, "B-2");
  Add(2, "A-1");
  Store.Run("update tblPersonalListItem set zCustomerNotes = 'x' || char(1) where zItemNumber = 'B-2'");
  Save();
  std::string zSaid = qm_ordering::LastFailure().Description;
  EXPECT_TRUE(zSaid.starts_with("List 1, Tools: Line 2, item B-2: ")) << zSaid;
  EXPECT_NE(std::string::npos, zSaid.find("\"customernotes\"")) << zSaid;

  PersonalLists loaded;
  loaded.LoadLists();
  loaded.Item(2)->Name("Pa\x01int");
  loaded.SaveAsXML();
  zSaid = qm_ordering::LastFailure().Description;
  EXPECT_TRUE(zSaid.starts_with("List 2, Pa\x01int: ")) << zSaid;
  const qm_ordering::Failure raised = test::FailureOf([&] { loaded.GetXML(); });
  EXPECT_EQ(failure::kXmlCharacter, raised.Number());
  EXPECT_EQ(zSaid, raised.Description());
}

TEST_F(PersonalListsTest, SayThatTheFileCannotBeReplaced) {
  std::filesystem::create_directories(File() + "/in the way");
  Lists.CreateList("a");
  Save();
  EXPECT_EQ(failure::kFileAccess, qm_ordering::LastFailure().Number);
  EXPECT_EQ("Cannot write the file of the personal lists \"" + File() + "\": Is a directory.",
            qm_ordering::LastFailure().Description);
}

TEST_F(PersonalListsTest, LeaveTheOldFileWhenTheDiskIsFull) {
  Lists.CreateList("a");
  Add(1, "A-1");
  Save();
  const std::string zOld = test::ReadFile(File());
  Add(1, "B-2", std::string(400'000, 'x'));
  qm_ordering::ado::embedded::CloseIdleSessions();
  test::ChildProcess child([]() -> std::string {
    // A limit on the size of a file fails in the middle of the writing, as a full disk does.
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{300'000, 300'000};
    if (setrlimit(RLIMIT_FSIZE, &limit) != 0) {
      return "no limit";
    }
    Save();
    return std::to_string(qm_ordering::LastFailure().Number) + " " + qm_ordering::LastFailure().Description;
  });
  EXPECT_EQ("75 Cannot write the file of the personal lists \"" + File() + "\": File too large.",
            child.Outcome());
  EXPECT_EQ(zOld, test::ReadFile(File()));
}

TEST_F(PersonalListsTest, AreWrittenThroughASymbolicLink) {
  std::filesystem::create_directory(Folder.File("shared"));
  std::filesystem::create_symlink("shared/PersonalLists.xml", File());
  Save();
  EXPECT_TRUE(std::filesystem::is_symlink(File()));
  EXPECT_EQ("<personallists/>", test::ReadFile(Folder.File("shared/PersonalLists.xml")));
}
