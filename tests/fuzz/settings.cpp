#include "acquisition/settings.h"

#include "platform/linux/settings_check.h"
#include "platform/portable/embedded_resources.h"
#include "platform/real_fft.h"
#include "tests/fuzz/fuzz.h"
#include "tests/support/test_platform.h"

/// Settings that are taken keep their bounds where they are read.
void veyla::fuzz(std::string_view input) {
  static const std::string names[] = {"Spo2Settings", "HeartrateSettings", "CameraSettings"};
  Choices choices(input);
  const std::string& given = names[choices.pick(std::size(names))];
  static TestPlatform machine;
  machine.log.lines.clear();
  const EmbeddedResources shipped;
  for (const std::string& name : names) {
    machine.resources.files[name + ".json"] = *shipped.read(name, "json");
  }
  machine.resources.files[given + ".json"] = input.substr(input.size() - choices.left());
  for (const auto& problem :
       checkSettings(machine.resources, machine.json, Utils::platformString())) {
    must(problem.line.starts_with(given), "the fault is in the file that has it");
    if (problem.kind != SettingsProblem::Kind::warning) return;
  }
  Utils::setSpo2Settings(Utils::loadDefaultSettings(names[0]));
  Utils::setHeartrateSettings(Utils::loadDefaultSettings(names[1]));
  const auto keeps = [](const Value& value, int least, int most) {
    must(value.intValue() >= least && value.intValue() <= most, "a setting keeps its bounds");
  };
  keeps(Utils::getHeartrateSettings("rawDataSize"), 3, RealFft::length);
  keeps(Utils::getSpo2Settings("rawDataSize"), 3, 100000);
  keeps(Utils::getSpo2Settings("neededValidSpo2"), 1, 10000);
  std::vector<int> cells;
  Utils::appendCells(Utils::getSpo2Settings("grids"), cells);
  must(!cells.empty(), "there is a cell to average");
  for (const int cell : cells) keeps(cell, 1, 16);
}
