#include "looking/diagnosis.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <ostream>

#include "Readers/hostapi/container_status.h"

namespace dorvex::diagnosis_test {
namespace {

Result diagnosed(int moduleResult, const Observations& seen, const PackageLook& look = {}) {
  return diagnose(moduleResult, seen, [&] { return look; });
}

TEST(Diagnose, TakesZeroWithNothingSeenForASuccessAndDoesNotEvenLook) {
  const Result result = diagnose(0, {}, []() -> PackageLook { throw "looked"; });
  EXPECT_EQ(result.status, Status::kOk);
  EXPECT_EQ(result.failure, Failure::kNone);
  EXPECT_EQ(result.message, "");
  EXPECT_EQ(result.moduleResult, 0);
}

TEST(Diagnose, NeverCallsATextWholeOfWhichAMemberIsMissing) {
  Observations seen;
  seen.unsound = {{"Index/a.iwa", "chunk 1 holds damaged data"}, {"Index/b.iwa", "chunk 2"}};
  const Result result = diagnosed(0, seen);
  EXPECT_EQ(result.status, Status::kPartial);
  EXPECT_EQ(result.failure, Failure::kDamaged);
  EXPECT_EQ(result.message,
            "partial text: damaged member Index/a.iwa: chunk 1 holds damaged data (2 members in "
            "all)");
  EXPECT_EQ(result.skipped, seen.unsound);
}

TEST(Diagnose, CallsATextPartialForEveryOtherThingSeen) {
  Observations refused, noContainer, open, read, scratch, endless, module;
  refused.refused = {"a", 21};
  noContainer.notAContainer = "Index.zip";
  open.openFailure = {"a", EACCES};
  read.readFailure = {"a", EIO};
  scratch.scratchFailure = {"a", ENOSPC};
  endless.endlessRead = "a";
  module.missingModule = "unzip.so";
  for (const auto& seen : {refused, noContainer, open, read, scratch, endless, module}) {
    EXPECT_EQ(diagnosed(0, seen).status, Status::kPartial);
  }
}

TEST(Diagnose, NamesTheLimitThatWasPassedAndLooksNoFurther) {
  Observations seen;
  seen.limitPassed = {Limit::kDepth, 16, "Index.zip"};
  for (const int moduleResult : {0, 6}) {
    const Result result = diagnose(moduleResult, seen, []() -> PackageLook { throw "looked"; });
    EXPECT_EQ(result.status, moduleResult == 0 ? Status::kPartial : Status::kFailed);
    EXPECT_EQ(result.failure, Failure::kLimitPassed);
    EXPECT_EQ(result.limit, Limit::kDepth);
  }
}

struct Row {
  std::string name;
  int moduleResult;
  Observations seen;
  PackageLook look;
  Failure failure;
  std::string message;
  friend void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }
};

template <typename Change>
Observations saw(Change change) {
  Observations seen;
  change(seen);
  return seen;
}

class DiagnoseFailure : public ::testing::TestWithParam<Row> {};

TEST_P(DiagnoseFailure, SaysWhatAPersonCanActOn) {
  const Row& row = GetParam();
  const Result result = diagnosed(row.moduleResult, row.seen, row.look);
  EXPECT_EQ(result.status, Status::kFailed);
  EXPECT_EQ(result.failure, row.failure);
  EXPECT_EQ(result.message, row.message);
  EXPECT_EQ(result.moduleResult, row.moduleResult);
}

const Observations kNoContainer = saw([](auto& seen) { seen.notAContainer = ""; });
Observations refusedWith(int status) {
  return saw([=](auto& seen) { seen.refused = {"Index/a.iwa", status}; });
}

// Whatever else was seen on the way.
Observations passed(PassedLimit limit) {
  return saw([&](auto& seen) {
    seen.limitPassed = limit;
    seen.refused = {"a", VN_CONTAINER_WRITE_FAILURE};
    seen.notAContainer = "b";
  });
}

INSTANTIATE_TEST_SUITE_P(
    Rows, DiagnoseFailure,
    ::testing::Values(
        Row{"NoZip",
            6,
            kNoContainer,
            {},
            Failure::kNotAPackage,
            "not a package at all: neither a zip nor a package directory"},
        Row{"EmptyFile",
            6,
            kNoContainer,
            {.empty = true},
            Failure::kNotAPackage,
            "not a package at all: the file is empty"},
        Row{"OneStream",
            6,
            kNoContainer,
            {.beginsLikeAChunk = true},
            Failure::kNotAPackage,
            "not a package at all, maybe one stream of a package directory: give the directory"},
        Row{"CutZip",
            6,
            kNoContainer,
            {.beginsLikeAZip = true},
            Failure::kDamaged,
            "damaged zip: its list of members cannot be read"},
        Row{"NestedNoZip",
            6,
            saw([](auto& seen) { seen.notAContainer = "Index.zip"; }),
            {},
            Failure::kDamaged,
            "damaged package: Index.zip is not a readable zip"},
        Row{"DamagedMember",
            6,
            refusedWith(VN_CONTAINER_DAMAGED),
            {},
            Failure::kDamaged,
            "the zip member Index/a.iwa is damaged"},
        Row{"EncryptedMember",
            6,
            refusedWith(VN_CONTAINER_ENCRYPTED),
            {},
            Failure::kPasswordProtected,
            "the zip member Index/a.iwa is encrypted"},
        Row{"Compression",
            6,
            refusedWith(VN_CONTAINER_COMPRESSION_NOT_SUPPORTED),
            {},
            Failure::kUnsupportedCompression,
            "the zip member Index/a.iwa has a compression that is not supported"},
        Row{"MemberTooLarge",
            2,
            refusedWith(VN_CONTAINER_OUT_OF_MEMORY),
            {},
            Failure::kOutOfMemory,
            "the zip member Index/a.iwa does not fit into memory"},
        Row{"ForeignStatus",
            6,
            refusedWith(99),
            {},
            Failure::kOther,
            "the zip member Index/a.iwa cannot be extracted (status 99)"},
        Row{"Password",
            4,
            refusedWith(VN_CONTAINER_DAMAGED),
            {.passwordProtected = true},
            Failure::kPasswordProtected,
            "password-protected: remove the password in the application that wrote it"},
        Row{"Iwork09",
            4,
            {},
            {.iwork09 = true},
            Failure::kIwork09,
            "an iWork '09 package: save it again with a later version of the application"},
        Row{"NothingRecognised",
            4,
            {},
            {.hasStreams = true},
            Failure::kNothingRecognised,
            "nothing recognised in the package"},
        Row{"OtherZip",
            4,
            {},
            {},
            Failure::kNothingRecognised,
            "nothing recognised: a zip, but without iWork streams"},
        Row{"OtherDirectory",
            4,
            {},
            {.directory = true},
            Failure::kNotAPackage,
            "not a package at all: a directory without Index or Index.zip"},
        Row{"OutOfMemory", 2, {}, {}, Failure::kOutOfMemory, "memory is out"},
        Row{"Unknown", 6, {}, {}, Failure::kOther, "the reader gave up"},
        Row{"MemberDenied",
            2,
            saw([](auto& seen) {
              seen.openFailure = {"Index/a.iwa", EACCES};
            }),
            {},
            Failure::kPermissionDenied,
            "cannot open Index/a.iwa: Permission denied"},
        Row{"MemberGone",
            2,
            saw([](auto& seen) {
              seen.openFailure = {"Index/a.iwa", ENOENT};
            }),
            {},
            Failure::kCannotRead,
            "cannot open Index/a.iwa: No such file or directory"},
        Row{"ReadError",
            6,
            saw([](auto& seen) {
              seen.readFailure = {"Index/a.iwa", EIO};
            }),
            {},
            Failure::kCannotRead,
            "cannot read Index/a.iwa: Input/output error"},
        Row{"DiskFull",
            6,
            saw([](auto& seen) {
              seen.scratchFailure = {"Index.zip", ENOSPC};
              seen.refused = {"Index.zip", VN_CONTAINER_WRITE_FAILURE};
            }),
            {},
            Failure::kOutOfResources,
            "cannot write scratch space for Index.zip: No space left on device"},
        Row{"NoContainerModule",
            6,
            saw([](auto& seen) { seen.missingModule = "unzip.so: gone"; }),
            {},
            Failure::kModuleMissing,
            "the container module cannot be loaded: unzip.so: gone"},
        Row{"Endless",
            6,
            saw([](auto& seen) {
              seen.endlessRead = "a.iwa";
              seen.unsound = {{"a.iwa", "it has stray bytes behind its last chunk"}};
            }),
            {},
            Failure::kEndlessRead,
            "stopped: reading a.iwa would never end, it has stray bytes behind its last chunk"},
        Row{"TooManyMembers",
            6,
            passed({Limit::kMembers, 100, ""}),
            {},
            Failure::kLimitPassed,
            "stopped: the zip has more than 100 members"},
        Row{"TooManyMembersOfANestedZip",
            6,
            passed({Limit::kMembers, 100, "Index.zip"}),
            {},
            Failure::kLimitPassed,
            "stopped: the zip member Index.zip has more than 100 members"},
        Row{"TooDeep",
            6,
            passed({Limit::kDepth, 16, "Index.zip/Index.zip"}),
            {},
            Failure::kLimitPassed,
            "stopped: the zip member Index.zip/Index.zip lies in more than 16 containers"},
        Row{"MemberBytes",
            6,
            passed({Limit::kMemberBytes, 1000, "a.iwa"}),
            {},
            Failure::kLimitPassed,
            "stopped: the zip member a.iwa expands to more than 1000 bytes"},
        Row{"TotalBytes",
            6,
            passed({Limit::kTotalBytes, 1000, "a.iwa"}),
            {},
            Failure::kLimitPassed,
            "stopped: with the zip member a.iwa the members expand to more than 1000 bytes"},
        Row{"Expansion",
            6,
            passed({Limit::kExpansion, 1100, "Index/a.iwa"}),
            {},
            Failure::kLimitPassed,
            "stopped: the zip member Index/a.iwa expands beyond 1100 to 1"},
        Row{"Scratch",
            6,
            passed({Limit::kScratch, 1000, "a.iwa"}),
            {},
            Failure::kLimitPassed,
            "stopped: with the zip member a.iwa more than 1000 bytes of scratch space are in use"},
        Row{"AllMembersDropped",
            4,
            saw(
                [](auto& seen) {
                  seen.unsound = {{"a.iwa", "why"}};
                }),
            {.hasStreams = true},
            Failure::kDamaged,
            "damaged member a.iwa: why"}),
    [](const auto& info) { return info.param.name; });

TEST(SystemFailureResult, TellsTheKindsApart) {
  EXPECT_EQ(systemFailure(ENOENT).failure, Failure::kNoSuchFile);
  EXPECT_EQ(systemFailure(EACCES).failure, Failure::kPermissionDenied);
  for (const int shortage : {ENOMEM, EMFILE, ENFILE, EAGAIN, ENOSPC, EDQUOT}) {
    EXPECT_EQ(systemFailure(shortage).failure, Failure::kOutOfResources);
  }
  EXPECT_EQ(systemFailure(EIO).failure, Failure::kCannotRead);
  EXPECT_EQ(systemFailure(ENOENT).message, "No such file or directory");
  EXPECT_EQ(systemFailure(ENOENT).status, Status::kFailed);
}

TEST(Describe, AddsTheModulesReturnValueWhereThereIsOne) {
  Result result;
  result.message = "what happened";
  EXPECT_EQ(describe(result), "what happened");
  result.moduleResult = 6;
  EXPECT_EQ(describe(result), "what happened (the module returned 6)");
}

}  // namespace
}  // namespace dorvex::diagnosis_test
