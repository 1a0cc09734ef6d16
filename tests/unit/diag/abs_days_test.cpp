// SPDX-License-Identifier: MIT
// Day numbers, against the table, a count day by day and the standard library's calendar.
#include <gtest/gtest.h>

#include <chrono>

#include <gwq/diag/log.h>

namespace gwq::test {
namespace {

struct DayCase {
  int year, month, day, number;
};

TEST(GetAbsDays, CountsFromTheFirstDayOfYearOne) {
  for (const DayCase& test :
       {DayCase{1, 1, 1, 0}, DayCase{1, 1, 2, 1}, DayCase{1, 2, 1, 31}, DayCase{1, 12, 31, 364},
        DayCase{2, 1, 1, 365}, DayCase{5, 1, 1, 1461}, DayCase{1970, 1, 1, 719162},
        DayCase{2000, 3, 1, 730179}, DayCase{2024, 1, 1, 738885}}) {
    EXPECT_EQ(GetAbsDays(test.year, test.month, test.day), test.number) << test.year << '-' << test.month;
  }
}

TEST(GetAbsDays, KnowsTheLeapYearsOfTheCenturies) {
  EXPECT_EQ(GetAbsDays(2000, 3, 1) - GetAbsDays(2000, 2, 28), 2);
  EXPECT_EQ(GetAbsDays(1900, 3, 1) - GetAbsDays(1900, 2, 28), 1);
  EXPECT_EQ(GetAbsDays(2024, 3, 1) - GetAbsDays(2024, 2, 28), 2);
  EXPECT_EQ(GetAbsDays(2023, 3, 1) - GetAbsDays(2023, 2, 28), 1);
  EXPECT_EQ(GetAbsDays(2100, 3, 1) - GetAbsDays(2100, 2, 28), 1);
}

TEST(GetAbsDays, ChecksNoRange) {
  EXPECT_EQ(GetAbsDays(2024, 0, 1), GetAbsDays(2024, 1, 1));
  EXPECT_EQ(GetAbsDays(2024, -7, 1), GetAbsDays(2024, 1, 1));
  EXPECT_EQ(GetAbsDays(2024, 5, 0), GetAbsDays(2024, 4, 30));
  EXPECT_EQ(GetAbsDays(2024, 4, 31), GetAbsDays(2024, 5, 1));
  EXPECT_EQ(GetAbsDays(2024, 1, 400), GetAbsDays(2024, 1, 1) + 399);
}

TEST(GetAbsDays, DividesTowardZeroBeforeYearOne) {
  EXPECT_EQ(GetAbsDays(0, 0, 0), -366);
  EXPECT_EQ(GetAbsDays(0, 1, 1), -365);
  EXPECT_EQ(GetAbsDays(0, 3, 1), -365 + 31 + 29);
  EXPECT_EQ(GetAbsDays(-3, 1, 1), -4 * 365 - 1);
}

TEST(GetAbsDays, GrowsByOneFromDayToDay) {
  int expected = 0;
  for (int year = 1; year <= 2500; ++year) {
    const bool leap = year % 400 == 0 || (year % 4 == 0 && year % 100 != 0);
    const int lengths[] = {31, leap ? 29 : 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    for (int month = 1; month <= 12; ++month) {
      for (int day = 1; day <= lengths[month - 1]; ++day) {
        ASSERT_EQ(GetAbsDays(year, month, day), expected++) << year << '-' << month << '-' << day;
      }
    }
  }
}

TEST(GetAbsDays, AgreesWithTheStandardCalendar) {
  using std::chrono::sys_days;
  using std::chrono::year_month_day;
  const sys_days first{year_month_day(std::chrono::year(1), std::chrono::month(1), std::chrono::day(1))};
  for (int number = 0; number < 3'652'059; number += 13) {
    const year_month_day date{first + std::chrono::days(number)};
    ASSERT_EQ(GetAbsDays(static_cast<int>(date.year()), static_cast<int>(static_cast<unsigned>(date.month())),
                         static_cast<int>(static_cast<unsigned>(date.day()))),
              number);
  }
}

}  // namespace
}  // namespace gwq::test
