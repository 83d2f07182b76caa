#pragma once

#include <memory>

#include "platform/real_fft.h"

namespace veyla {

/// The tables are made once, and `forward` allocates nothing.
class KissRealFft : public RealFft {
 public:
  KissRealFft();
  ~KissRealFft() override;

  void forward(std::span<const double, length> samples, std::span<double, binCount> real,
               std::span<double, binCount> imaginary) override;

 private:
  struct Tables;
  std::unique_ptr<Tables> tables_;
};

}  // namespace veyla
