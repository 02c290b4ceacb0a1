// CSV rows go through the atomic file's buffer; the target is replaced only on Commit.
#include "jobs/csv/csv_sink.h"

namespace kroveld {

bool CsvSink::Open(const std::string& path) {
  return file_.Open(path);
}

bool CsvSink::Commit() {
  return file_.Commit();
}

void CsvSink::Abort() {
  file_.Abort();
}

void CsvSink::WriteCsvRow(std::string_view row) {
  file_.Write(row);
  file_.Write("\r\n");
}

}  // namespace kroveld
