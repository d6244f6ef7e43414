#include "bytes/quota.h"

#include <gtest/gtest.h>

namespace dorvex::quota_test {
namespace {

constexpr ContainerLimits kNone{
    .members = 0, .depth = 0, .memberBytes = 0, .totalBytes = 0, .expansion = 0};

TEST(Quota, TakesEverythingWithoutLimits) {
  Quota quota(0, kNone);
  EXPECT_EQ(quota.take(0, UINT64_MAX / 2), Limit::kNone);
  EXPECT_EQ(quota.take(UINT64_MAX / 2, UINT64_MAX / 2), Limit::kNone);
}

TEST(Quota, NamesTheLimitThatWouldBePassedAndCountsNothing) {
  ContainerLimits limits = kNone;
  limits.memberBytes = 10;
  limits.totalBytes = 15;
  Quota quota(12, limits);
  EXPECT_EQ(quota.take(0, 10), Limit::kNone);
  EXPECT_EQ(quota.take(10, 1), Limit::kMemberBytes);
  EXPECT_EQ(quota.take(0, 3), Limit::kScratch);
  EXPECT_EQ(quota.take(0, 6), Limit::kTotalBytes);
  EXPECT_EQ(quota.take(0, 2), Limit::kNone);
  EXPECT_EQ(quota.allowed(Limit::kMemberBytes), 10u);
  EXPECT_EQ(quota.allowed(Limit::kTotalBytes), 15u);
  EXPECT_EQ(quota.allowed(Limit::kScratch), 12u);
}

TEST(Quota, GetsBackScratchSpaceButNotTheTotal) {
  ContainerLimits limits = kNone;
  limits.totalBytes = 10;
  Quota quota(5, limits);
  EXPECT_EQ(quota.take(0, 5), Limit::kNone);
  quota.giveBack(5);
  EXPECT_EQ(quota.take(0, 5), Limit::kNone);
  quota.giveBack(5);
  EXPECT_EQ(quota.take(0, 1), Limit::kTotalBytes);
}

TEST(Quota, DoesNotWrapAround) {
  ContainerLimits limits = kNone;
  limits.memberBytes = UINT64_MAX - 1;
  Quota quota(0, limits);
  EXPECT_EQ(quota.take(10, UINT64_MAX - 5), Limit::kMemberBytes);
}

}  // namespace
}  // namespace dorvex::quota_test
