#pragma once

#include <string>

#include "platform/png/picture.h"

namespace quil {

/// The picture as a PNG file: 1 to 8 bits per pixel with a palette when 256 colours are enough,
/// else 8 bits per channel, with alpha only when some pixel is not opaque. Empty when the size of
/// the image is not one for images.
std::string encodePng(const Picture& picture);

}  // namespace quil
