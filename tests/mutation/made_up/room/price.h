#pragma once

constexpr int kPriceOfOne = 3;

int priceOf(int pieces);
