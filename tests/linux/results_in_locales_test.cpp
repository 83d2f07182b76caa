#include <gmock/gmock.h>

#include "history/history_store.h"
#include "history/results_view_controller.h"
#include "platform/linux/icu_text.h"
#include "tests/support/recorder_results_view.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

/// What the results screen makes of one entry in a zone and a locale.
struct Shown {
  std::string cell;
  std::string csvLine;
  std::string fileName;
};

Shown shown(const char* locale, const char* zone, Date date, Date now) {
  TestPlatform scripted;
  TimedQueue queue;
  QueueClock clock(now, queue);
  const IcuText text(locale, zone);
  Services services = Platform::current().services();
  const Platform platform({services.log,
                           queue,
                           clock,
                           services.camera,
                           services.realFft,
                           services.store,
                           services.healthStore,
                           services.resources,
                           services.json,
                           services.jsonWriter,
                           services.device,
                           text,
                           text,
                           text,
                           text,
                           services.uuids,
                           services.measuringDisplay,
                           services.alertView,
                           services.screens,
                           services.sharing});
  Utils::saveHeartrate(71.5, 97.4, date, std::nullopt);
  ResultsView view;
  ResultsViewController screen(view, {});
  screen.viewDidLoad();
  screen.setEditing(true, false);
  screen.clickAllAndNone();
  screen.emailCSVResults();
  const HistoryTableViewCell cell = screen.listCell(0);
  const MailAttachment file = scripted.sharing.mails.back().attachments.front();
  std::string plain = cell.dateLabel;
  for (std::size_t at = 0; (at = plain.find("\u202f")) != std::string::npos;) {
    plain.replace(at, 3, " ");
  }
  return {plain + " / " + cell.heartrateLabel + " / " + cell.spo2Label,
          file.data.substr(file.data.find('\n') + 1), file.fileName};
}

TEST(ResultsInLocalesTest, TheListFollowsTheLocaleAndTheCsvTheZoneAlone) {
  constexpr Date summer{1720650599.9};  // 2024-07-10 22:29:59 UTC
  struct Case {
    const char* locale;
    const char* zone;
    const char* cell;
    const char* csvLine;
    const char* fileName;
  };
  for (const Case& of : {
           Case{"en_US", "UTC", "Jul 10, 2024, 10:29 PM / 72 bpm / 97%",
                "2024-07-10 22:29:59,72,97", "veyla-data-20240710.csv"},
           Case{"de_DE", "Europe/Berlin", "11.07.2024, 00:29 / 72 bpm / 97%",
                "2024-07-11 00:29:59,72,97", "veyla-data-20240711.csv"},
           Case{"en_US", "America/St_Johns", "Jul 10, 2024, 7:59 PM / 72 bpm / 97%",
                "2024-07-10 19:59:59,72,97", "veyla-data-20240710.csv"},
           Case{"ja_JP", "Pacific/Kiritimati", "2024/07/11 12:29 / 72 bpm / 97%",
                "2024-07-11 12:29:59,72,97", "veyla-data-20240711.csv"},
           Case{"ar_EG", "Pacific/Pago_Pago",
                "\u0661\u0660\u200f/\u0660\u0667\u200f/\u0662\u0660\u0662\u0664\u060c "
                "\u0661\u0661:\u0662\u0669 \u0635 / 72 bpm / 97%",
                "2024-07-10 11:29:59,72,97", "veyla-data-20240710.csv"},
           // Neither another calendar.
           Case{"th_TH", "Asia/Bangkok", "11 \u0e01.\u0e04. 2567 05:29 / 72 bpm / 97%",
                "2024-07-11 05:29:59,72,97", "veyla-data-20240711.csv"},
       }) {
    SCOPED_TRACE(of.locale);
    const Shown found = shown(of.locale, of.zone, summer, summer);
    EXPECT_EQ(found.cell, of.cell);
    EXPECT_EQ(found.csvLine, of.csvLine);
    EXPECT_EQ(found.fileName, of.fileName);
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
