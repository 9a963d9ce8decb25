#pragma once

#include <cstddef>

std::size_t CountDecodings();
