#pragma once

namespace dravenna {

constexpr int kVersionMajor = 1;
constexpr int kVersionMinor = 2;
constexpr int kVersionRevision = 6;

}  // namespace dravenna
