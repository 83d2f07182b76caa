#pragma once

#include <string>

namespace veyla {

/// Where the product's makers and its users meet; empty where the resource "Product" says nothing.
struct Product {
  /// The mail address that feedback goes to.
  std::string supportAddress;
  /// Its page in the application store, the store's host, and its number there.
  std::string storePage;
  std::string storeHost;
  std::string storeId;
  std::string socialMediaPage;
};

namespace Utils {

/// Read anew at every call.
Product product();

}  // namespace Utils

}  // namespace veyla
