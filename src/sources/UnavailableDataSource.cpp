#include "sources/UnavailableDataSource.h"

namespace tidemark {

void UnavailableDataSource::fetchQuotes(SourceMode source, const DataSourceEndpoints&,
                                        const std::vector<std::string>&, const QuoteMap&,
                                        QuotesCompletion completion) {
  completion({}, std::string(label(source)) + " 暂不可用");
}

}  // namespace tidemark
