#pragma once

/// Whether this launch is the first one, or the first one of a new version. The first question
/// after a launch looks up the version of the launch before and records this one's; later questions
/// get the same answers.
namespace veyla::Utils {

bool isAppOnFirstLaunch();
bool isAppVersionUpdated();

}  // namespace veyla::Utils
