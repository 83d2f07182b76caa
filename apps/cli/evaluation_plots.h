#pragma once

#include <memory>
#include <string>

#include "apps/cli/evaluation.h"
#include "platform/linux/output_file.h"

namespace veyla {

/// Two pictures of an evaluation's heart rates in a folder: `bland-altman.png`, differences over
/// means with the bias and the limits of agreement, and `error-over-rate.png`, absolute errors over
/// the reference's rate beside a tenth of it. Each set has its colour.
class EvaluationPlots {
 public:
  /// Makes the folder where it is absent, and both files, so that what cannot be written is told
  /// before the work. Throws `OutputError`.
  explicit EvaluationPlots(const std::string& folder);

  /// To be called once. Draws nothing and returns false where nothing was compared. Throws
  /// `OutputError`.
  bool draw(const Evaluation& evaluation);

 private:
  PendingFolder folder_;
  std::unique_ptr<OutputFile> blandAltman_;
  std::unique_ptr<OutputFile> errorOverRate_;
};

}  // namespace veyla
