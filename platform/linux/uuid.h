#pragma once

#include <string>

#include "platform/text_services.h"

namespace veyla {

class LibUuid : public UuidGenerator {
 public:
  std::string randomUuid() override;
};

}  // namespace veyla
