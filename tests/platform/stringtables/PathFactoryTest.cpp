#include "platform/stringtables/PathFactory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/errors/OMSException.h"
#include "platform/stringtables/FacSTDictionary.h"

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
  EXPECT_THAT([] { PathFactory::getPathInstance(7); },
              testing::ThrowsMessage<OMSException>(testing::StrEq(
                  "PathFactory::getPathInstance -- unknown path kind, value 1 == 7, "
                  "value 2 == 0")));
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
