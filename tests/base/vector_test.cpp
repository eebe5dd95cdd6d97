// The generic vector, the angle unit and the acceleration switch.
#include "ky/vector.h"

#include <gtest/gtest.h>

#include <climits>

#include "ky/angle.h"
#include "ky/processor.h"
#include "ky/version.h"

namespace {

TEST(Vector, TypesDescribeTheirElements) {
  const struct {
    int type, length, groupLength, dataSize, dataType, bytes;
  } cases[] = {{1, 0, 3, 8, 2, 60},
               {2, 0, 1, 8, 1, 20},
               {3, 0, 1, 2, 1, 5},
               {4, 0, 3, 8, 2, 60},
               {4, 2, 2, 8, 2, 40}};
  KyVector vector;
  for (const auto& c : cases) {
    vector.SetUse(7);
    ASSERT_EQ(vector.SetType(c.type, 5, c.length), KY_OK);
    EXPECT_TRUE(vector.IsSameVectType(c.type));
    EXPECT_EQ(vector.GetGroupLength(), c.groupLength);
    EXPECT_EQ(vector.GetDataSize(), c.dataSize);
    EXPECT_EQ(vector.GetDataType(), c.dataType);
    EXPECT_EQ(vector.GetAllocatedSize(), c.bytes);
    EXPECT_EQ(vector.GetNbMaxGroup(), 5);
    EXPECT_EQ(vector.GetNbGroup(), 0);
    EXPECT_EQ(vector.GetUse(), 0);
    EXPECT_EQ(static_cast<unsigned char*>(vector.GetDataPtr())[c.bytes - 1], 0);
    vector.SetNbGroup(5);  // what comes next forgets them
  }
}

TEST(Vector, RefusalsChangeNothing) {
  KyVector vector;
  ASSERT_EQ(vector.SetStructure(4, 6, 2, 2), KY_OK);
  ASSERT_EQ(vector.SetNbGroup(6), KY_OK);
  EXPECT_EQ(vector.SetType(0, 5, 0), KY_ERROR_PARAMETER_1_OUT_OF_RANGE);
  EXPECT_EQ(vector.SetType(5, 5, 0), KY_ERROR_PARAMETER_1_OUT_OF_RANGE);
  EXPECT_EQ(vector.SetType(1, -1, 0), KY_ERROR_PARAMETER_2_OUT_OF_RANGE);
  EXPECT_EQ(vector.SetType(1, 1, -1), KY_ERROR_PARAMETER_3_OUT_OF_RANGE);
  EXPECT_EQ(vector.SetType(1, INT_MAX, INT_MAX), KY_ERROR_NOT_ENOUGH_MEMORY);
  EXPECT_EQ(vector.SetStructure(3, 1, 1, 1), KY_ERROR_PARAMETER_1_OUT_OF_RANGE);
  EXPECT_EQ(vector.SetStructure(8, 1, 0, 1), KY_ERROR_PARAMETER_3_OUT_OF_RANGE);
  EXPECT_EQ(vector.SetStructure(8, 1, 1, 3), KY_ERROR_PARAMETER_4_OUT_OF_RANGE);
  EXPECT_EQ(vector.SetStructure(4, 1, 1, 4), KY_ERROR_PARAMETER_4_OUT_OF_RANGE);
  EXPECT_EQ(vector.SetNbGroup(7), KY_ERROR_PARAMETER_1_OUT_OF_RANGE);
  EXPECT_EQ(vector.SetNbGroup(-1), KY_ERROR_PARAMETER_1_OUT_OF_RANGE);
  EXPECT_EQ(vector.Reallocate(-1), KY_ERROR_PARAMETER_1_OUT_OF_RANGE);
  EXPECT_EQ(vector.GetNbGroup(), 6);
  EXPECT_EQ(vector.GetAllocatedSize(), 24);
}

TEST(Vector, ReallocationKeepsWhatFits) {
  KyVector vector;
  ASSERT_EQ(vector.SetType(2, 4, 0), KY_OK);
  static_cast<unsigned*>(vector.GetDataPtr())[1] = 5;
  vector.SetNbGroup(4);
  ASSERT_EQ(vector.Reallocate(10), KY_OK);
  EXPECT_EQ(vector.GetNbMaxGroup(), 2);
  EXPECT_EQ(vector.GetNbGroup(), 2);
  EXPECT_EQ(static_cast<unsigned*>(vector.GetDataPtr())[1], 5u);
  ASSERT_EQ(vector.Reallocate(0), KY_OK);
  EXPECT_EQ(vector.GetDataPtr(), nullptr);
  ASSERT_EQ(vector.Reallocate(8), KY_OK);
  EXPECT_EQ(vector.GetNbMaxGroup(), 2);
  vector.SetUse(7);
  KyVector moved(std::move(vector));
  EXPECT_EQ(moved.GetAllocatedSize(), 8);
  EXPECT_EQ(moved.GetUse(), 7);
  EXPECT_EQ(vector.GetDataPtr(), nullptr);  // NOLINT(bugprone-use-after-move)
}

TEST(Angle, UnitsConvertBothWays) {
  const struct {
    KY_ANGLE_UNIT unit;
    float turn;
  } units[] = {{KY_ANGLE_RADIANS, 6.283185307f},
               {KY_ANGLE_REVOLUTIONS, 1.0f},
               {KY_ANGLE_GRADES, 400.0f},
               {KY_ANGLE_DEGREES, 360.0f}};
  for (const auto& u : units) {
    ASSERT_EQ(KySetAngleUnit(u.unit), KY_OK);
    EXPECT_EQ(KyGetAngleUnit(), u.unit);
    EXPECT_FLOAT_EQ(KyToRadians(u.turn), 6.283185307f);
    EXPECT_FLOAT_EQ(KyFromRadians(6.283185307f), u.turn);
  }
  EXPECT_EQ(KySetAngleUnit(static_cast<KY_ANGLE_UNIT>(4)), KY_ERROR_UNSUPPORTED_OPERATION);
  EXPECT_EQ(KyGetAngleUnit(), KY_ANGLE_DEGREES);
}

TEST(Processor, TheSwitchForcesThePlainPath) {
  const int capable = KyGetMMX();
  KySetMMX(0);
  EXPECT_EQ(KyGetMMX(), 0);
  KySetMMX(1);
  EXPECT_EQ(KyGetMMX(), capable);
}

TEST(Version, HeadersAndLibraryAgree) {
  EXPECT_EQ(std::string(KyGetVersion()), std::to_string(KY_VERSION_MAJOR) + "." +
                                             std::to_string(KY_VERSION_MINOR) + "." +
                                             std::to_string(KY_VERSION_PATCH));
}

}  // namespace
