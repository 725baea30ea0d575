// The network module's one entry point, resolved by ModuleHttpClient after loading the module.
#include <QtGlobal>

#include "platform/QtHttpClient.h"

extern "C" Q_DECL_EXPORT tidemark::HttpClient* tidemarkCreateHttpClient() {
  return new tidemark::QtHttpClient;
}
