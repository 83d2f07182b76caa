#include "shell/product.h"

#include "shell/json_resource.h"

namespace veyla {

Product Utils::product() {
  const Value json = jsonResource("Product");
  return {textOf(json["supportAddress"]), textOf(json["storePage"]), textOf(json["storeHost"]),
          textOf(json["storeId"]), textOf(json["socialMediaPage"])};
}

}  // namespace veyla
