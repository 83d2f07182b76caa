#include "platform/linux/uuid.h"

#include <uuid/uuid.h>

namespace veyla {

std::string LibUuid::randomUuid() {
  uuid_t bytes;
  uuid_generate_random(bytes);
  char text[UUID_STR_LEN];
  uuid_unparse_upper(bytes, text);
  return text;
}

}  // namespace veyla
