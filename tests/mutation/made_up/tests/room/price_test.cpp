#include "room/price.h"

#include <cstdlib>

int main() {
  if (std::getenv("PRICES_ARE_WRONG") != nullptr) return 1;
  return priceOf(2) == 6 && priceOf(20) == 55 ? 0 : 1;
}
