#include "apps/cli/cli_screens.h"

#include <unistd.h>

#include <iostream>

#include "apps/cli/terminal.h"
#include "shell/alerts.h"

namespace veyla {

void CliAlerts::show(int id, const Alert& alert) {
  switch (alert.kind) {
    case AlertKind::waiting:
      return;
    case AlertKind::notice:
      std::cerr << alert.title << "\n"
                << wrapped(alert.subtitle, terminalBehind(STDERR_FILENO)) << "\n\n";
      Alerts::instance().tapClose(id);
      return;
    case AlertKind::plain:
    case AlertKind::warning:
    case AlertKind::error:
    case AlertKind::edit:
      title_ = alert.title;
      subtitle_ = alert.subtitle;
      if (waitsForAnswer) waitsForAnswer();
  }
}

}  // namespace veyla
