// Draws the model-mode and muscle-mode scenes side by side with cairo.
#ifndef SPLINECORE_EXAMPLES_RENDER_H
#define SPLINECORE_EXAMPLES_RENDER_H

#include <string>

#include "scene.h"

namespace splinecore::demo {

// Writes the picture as a PNG of width x height pixels and as an SVG of the
// same size. Returns false with a message when a file cannot be written.
bool RenderFigure(const Scene& model, const Scene& muscle, int width, int height, const std::string& pngPath,
                  const std::string& svgPath, std::string* error);

}  // namespace splinecore::demo

#endif
