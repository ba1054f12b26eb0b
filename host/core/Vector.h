#pragma once
#include <vector>

// The host's growable array.
template <class T>
using Vector = std::vector<T>;
