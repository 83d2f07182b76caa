#include <gmock/gmock.h>

#include "history/history_store.h"
#include "history/results_view_controller.h"
#include "platform/linux/icu_text.h"
#include "platform/linux/text_columns.h"
#include "tests/support/recorder_results_view.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

/// What the results screen makes of one entry in a zone and a locale: its cell in the list, its
/// line of the CSV file and the file's name.
struct Shown {
  std::string cell;
  std::string csvLine;
  std::string fileName;

  bool operator==(const Shown&) const = default;
};

Shown shown(const char* locale, const char* zone, Date date, Date now) {
  TestPlatform scripted;
  TimedQueue queue;
  QueueClock clock(now, queue);
  const IcuText text(locale, zone);
  const Services s = Platform::current().services();
  const Platform platform(
      {s.log,         queue,       clock,  s.camera,     s.realFft,          s.store,
       s.healthStore, s.resources, s.json, s.jsonWriter, s.device,           text,
       text,          text,        text,   s.uuids,      s.measuringDisplay, s.alertView,
       s.screens,     s.sharing});
  Utils::saveHeartrate(71.5, 97.4, date, std::nullopt);
  ResultsView view;
  ResultsViewController screen(view, {});
  screen.viewDidLoad();
  screen.setEditing(true, false);
  screen.clickAllAndNone();
  screen.emailCSVResults();
  const HistoryTableViewCell cell = screen.listCell(0);
  const MailAttachment file = scripted.sharing.mails.back().attachments.front();
  return {withAsciiSpaces(cell.dateLabel + " / " + cell.heartrateLabel + " / " + cell.spo2Label),
          file.data.substr(file.data.find('\n') + 1), file.fileName};
}

TEST(ResultsInLocalesTest, TheListFollowsTheLocaleAndTheCsvTheZoneAlone) {
  constexpr Date summer{1720650599.9};  // 2024-07-10 22:29:59 UTC
  struct Case {
    const char *locale, *zone;
    Shown expected;
  };
  for (const Case& of : {
           Case{"en_US",
                "UTC",
                {"Jul 10, 2024, 10:29 PM / 72 bpm / 97%", "2024-07-10 22:29:59,72,97",
                 "veyla-data-20240710.csv"}},
           Case{"de_DE",
                "Europe/Berlin",
                {"11.07.2024, 00:29 / 72 bpm / 97%", "2024-07-11 00:29:59,72,97",
                 "veyla-data-20240711.csv"}},
           Case{"en_US",
                "America/St_Johns",
                {"Jul 10, 2024, 7:59 PM / 72 bpm / 97%", "2024-07-10 19:59:59,72,97",
                 "veyla-data-20240710.csv"}},
           Case{"ja_JP",
                "Pacific/Kiritimati",
                {"2024/07/11 12:29 / 72 bpm / 97%", "2024-07-11 12:29:59,72,97",
                 "veyla-data-20240711.csv"}},
           Case{"ar_EG",
                "Pacific/Pago_Pago",
                {"\u0661\u0660\u200f/\u0660\u0667\u200f/\u0662\u0660\u0662\u0664\u060c "
                 "\u0661\u0661:\u0662\u0669 \u0635 / 72 bpm / 97%",
                 "2024-07-10 11:29:59,72,97", "veyla-data-20240710.csv"}},
           // Neither another calendar.
           Case{"th_TH",
                "Asia/Bangkok",
                {"11 \u0e01.\u0e04. 2567 05:29 / 72 bpm / 97%", "2024-07-11 05:29:59,72,97",
                 "veyla-data-20240711.csv"}},
       }) {
    EXPECT_EQ(shown(of.locale, of.zone, summer, summer), of.expected) << of.locale;
  }
}

TEST(ResultsInLocalesTest, TheClocksChangeBetweenTwoEntries) {
  const auto line = [](double seconds) {
    return shown("de_DE", "Europe/Berlin", Date{seconds}, Date{1709636399}).csvLine;
  };
  EXPECT_EQ(line(1711846799), "2024-03-31 01:59:59,72,97");
  EXPECT_EQ(line(1711846800), "2024-03-31 03:00:00,72,97");
  EXPECT_EQ(line(1729987200), "2024-10-27 02:00:00,72,97");
  EXPECT_EQ(line(1729990800), "2024-10-27 02:00:00,72,97") << "an hour later";
  EXPECT_EQ(line(-0.5), "1970-01-01 00:59:59,72,97") << "before 1970";
}

}  // namespace
}  // namespace veyla
