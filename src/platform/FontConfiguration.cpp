#include "platform/FontConfiguration.h"

#include <fontconfig/fontconfig.h>

namespace tidemark {

// Qt's font database asks for the same default configuration, which is made once per process.
void loadFontConfiguration() {
  FcInit();
}

}  // namespace tidemark
