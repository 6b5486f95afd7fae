#include "room/price.h"

// Nobody tests what exactly 10 pieces cost: the comparison lives.
int priceOf(int pieces) {
  int price = pieces * kPriceOfOne;
  if (pieces > 10) price -= 5;
  return price;
}
