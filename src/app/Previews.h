#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "core/Clock.h"
#include "model/AppModel.h"

namespace tidemark {

// One rendered image: its file name without ".png" and its size.
struct PreviewFile {
  std::string name;
  int width, height;
};

// Every file a preview run writes, in the order they are rendered.
std::vector<PreviewFile> previewFiles();

// Renders every main view in every theme, then the extra states, as PNG files into `directory`
// (created if missing). Changes the model's settings as it goes; write failures are ignored.
void renderPreviews(AppModel& model, const Clock& clock, const std::filesystem::path& directory);

// The preview mode: a throw-away model (nothing of the user's is read or written), every
// preview, "Rendered previews: DIR"; status 1 and a line on standard error when DIR cannot be
// made or written into. Works without a display.
int runRenderPreviews(int& argc, char** argv, const std::filesystem::path& directory);

}  // namespace tidemark
