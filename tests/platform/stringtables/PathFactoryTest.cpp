#include "platform/stringtables/PathFactory.h"

#include <gtest/gtest.h>


#include "platform/errors/OMSException.h"
#include "platform/stringtables/FacSTDictionary.h"
#include "tests/platform/stringtables/TempTables.h"

namespace {

class PathFactoryTest : public ::testing::Test {
protected:
  void TearDown() override {
    PathFactory::SetRoot("");
    _paths.ResetFolder();
    FacSTDictionary::ClearCache();
  }

  PathFactory& _paths = PathFactory::getPathInstance(PathFactory::kStringTables);
};

}  // namespace

TEST_F(PathFactoryTest, OnlyTheStringTableKindExists) {
  EXPECT_EQ(&PathFactory::getPathInstance(3), &_paths);
  try {
    PathFactory::getPathInstance(7);
    FAIL() << "no exception";
  } catch (const OMSException& e) {
    EXPECT_EQ(e.Message(), "PathFactory::getPathInstance -- unknown path kind");
    EXPECT_EQ(e.Value1(), 7);
  }
}

TEST_F(PathFactoryTest, FullPathJoinsRootAndFolderAndMakesTheFolderCurrent) {
  PathFactory::SetRoot("/srv/tables");
  EXPECT_EQ(_paths.Folder(), "lang/en");
  EXPECT_EQ(_paths.Directory().GetGeneric(), "/srv/tables/lang/en");

  EXPECT_EQ(_paths.GetFullPath("lang/zh_TW").GetGeneric(), "/srv/tables/lang/zh_TW");
  EXPECT_EQ(_paths.Folder(), "lang/zh_TW");
  EXPECT_EQ(_paths.Directory().GetGeneric(), "/srv/tables/lang/zh_TW");

  PathFactory::SetRoot("/srv/tables/");
  EXPECT_EQ(_paths.GetFullPath("lang/de").GetGeneric(), "/srv/tables/lang/de");
  _paths.ResetFolder();
  EXPECT_EQ(_paths.Directory().GetGeneric(), "/srv/tables/lang/en");
}

TEST_F(PathFactoryTest, ExplicitRootWinsUntilCleared) {
  PathFactory::FollowHostPath("/host/given");
  PathFactory::SetRoot("/explicit");
  PathFactory::FollowHostPath("/host/later/lang/ja");
  EXPECT_EQ(_paths.Root(), "/explicit");
  PathFactory::SetRoot("");
  EXPECT_EQ(_paths.Root(), "/host/later");
  PathFactory::FollowHostPath("");  // an empty location changes nothing
  EXPECT_EQ(_paths.Root(), "/host/later");
}
