// The numbers of the published result codes and of the enumerators of lists. Other programs and log
// readers rely on them. The other tests use the names.

#include "TASK_ENG_SyncML.h"
#include "ZTASK_ENG_Model.h"
#include "call_steps.h"

#include <gtest/gtest.h>

namespace {

TEST(ResultCodes, OfTheStoreAreFixed) {
  EXPECT_EQ(TASK_ENG_OK, 0);
  EXPECT_EQ(TASK_ENG_MEMORY_FULL, 1);
  EXPECT_EQ(TASK_ENG_BAD_PARAMETER, 2);
  EXPECT_EQ(TASK_ENG_NOT_FOUND, 3);
  EXPECT_EQ(TASK_ENG_DATABASE_FAILURE, 6);
  EXPECT_EQ(TASK_ENG_NOT_OPEN, 7);
  EXPECT_EQ(TASK_ENG_EXISTS, 8);
}

TEST(ResultCodes, OfTheSyncAdaptorAreFixed) {
  EXPECT_EQ(TASK_SYNCML_OK, 0);
  EXPECT_EQ(TASK_SYNCML_NOTFOUND, 1);
  EXPECT_EQ(TASK_SYNCML_NOMEMORY, 2);
  EXPECT_EQ(TASK_SYNCML_TOOLARGE, 3);
  EXPECT_EQ(TASK_SYNCML_BADPARAM, 4);
  EXPECT_EQ(TASK_SYNCML_OTHERERROR, 5);
}

// The log shows them.
TEST(ResultCodes, OfTheDatabaseAreFixed) {
  EXPECT_EQ(DB_OK, 0);
  EXPECT_EQ(DB_BAD_PARAMETER, 5);
  EXPECT_EQ(DB_IO, 9);
  EXPECT_EQ(DB_FULL, 12);
}

TEST(Enumerators, OfFiltersAndSortFieldsAreFixed) {
  EXPECT_EQ(ZTASK_ENG_Model::TASK_CATEGORY_ALL, 0);
  EXPECT_EQ(ZTASK_ENG_Model::TASK_CATEGORY_DUE, 1);
  EXPECT_EQ(ZTASK_ENG_Model::TASK_CATEGORY_INCOMPLETE, 2);
  EXPECT_EQ(ZTASK_ENG_Model::TASK_CATEGORY_COMPLETED, 3);
  EXPECT_EQ(ZTASK_ENG_Model::TASK_SORT_DUE, 0);
  EXPECT_EQ(ZTASK_ENG_Model::TASK_SORT_PRIORITY, 1);
}

TEST(Enumerators, OfChangeTypesAreFixed) {
  EXPECT_EQ(SVC_CT_ADDED, 1);
  EXPECT_EQ(SVC_CT_UPDATED, 2);
  EXPECT_EQ(SVC_CT_REMOVED, 3);
}

// Stand-ins and tests write steps with the same functions, so these must tell all values apart.
TEST(CallSteps, ShowEveryValue) {
  using namespace calls;
  EXPECT_EQ(bound(2, -5), "bind parameter 2 to -5");
  EXPECT_EQ(bound(0, null), "bind parameter 0 to null");
  EXPECT_EQ(bound(0, varchar("null")), "bind parameter 0 to 'null'");
  EXPECT_EQ(bound(3, exchanged(u"你a")), "bind parameter 3 to units 604f 6100");
  EXPECT_EQ(bound(3, exchanged(u"")), "bind parameter 3 to units");
  EXPECT_EQ(byBlock(queried("due_uids", {"task_index_due"})),
            "query due_uids task_index_due by block");
  EXPECT_EQ(executed("insert_default_category", {"none", "true"}),
            "execute insert_default_category none true");
  EXPECT_EQ(openedDatabase(1), "open database 1");
  EXPECT_EQ(began(0), "begin in mode 0");
  EXPECT_EQ(openedBlock(11), "open block for 11");
  EXPECT_EQ(openedPort("p", 0), "open port p with flags 0");
  EXPECT_EQ(closedPort("p"), "close port p");
  EXPECT_EQ(reported(31, SVC_CT_REMOVED),
            "report type 3 of task 31 by {9a4cdb74-34ec-415e-ba36-b8c2a35d0071} with handle -1");
  EXPECT_EQ(beganBatch("s"), "begin batch of s");
  EXPECT_EQ(endedBatch("s"), "end batch of s");
  EXPECT_EQ(logged("m"), "log m");
  SVC_CT_ChangeRecord change;
  change.reserved[3] = 1;
  EXPECT_EQ(reportedBy(change, 2),
            "report type 0 of task 0 by  with handle 2 and a reserved field that is not 0");
}

}  // namespace
