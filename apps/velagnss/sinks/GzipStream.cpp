#include "apps/velagnss/sinks/GzipStream.h"

#include <archive.h>
#include <archive_entry.h>

#include <utility>

namespace Host {
namespace {

la_ssize_t OnBytes(archive*, void* write, const void* bytes, std::size_t size) {
  const bool isTaken = (*static_cast<C_GzipStream::t_Write*>(write))({static_cast<const char*>(bytes), size});
  return isTaken ? static_cast<la_ssize_t>(size) : -1;
}

}  // namespace

void C_GzipStream::S_Free::operator()(archive* stream) const { archive_write_free(stream); }

// A single entry without a format of its own; no padding to blocks, as tapes want it.
C_GzipStream::C_GzipStream(t_Write write) : m_write(std::move(write)), m_stream(archive_write_new()) {
  archive* const stream = m_stream.get();
  archive_write_set_format_raw(stream);
  archive_write_add_filter_gzip(stream);
  archive_write_set_filter_option(stream, "gzip", "timestamp", nullptr);
  archive_write_set_bytes_per_block(stream, 0);
  archive_write_set_bytes_in_last_block(stream, 1);
  archive_write_open(stream, &m_write, nullptr, &OnBytes, nullptr);
  archive_entry* const entry = archive_entry_new();
  archive_entry_set_filetype(entry, AE_IFREG);
  archive_write_header(stream, entry);
  archive_entry_free(entry);
}

bool C_GzipStream::Write(std::string_view bytes) {
  return archive_write_data(m_stream.get(), bytes.data(), bytes.size()) == static_cast<la_ssize_t>(bytes.size());
}

bool C_GzipStream::Finish() { return archive_write_close(m_stream.get()) == ARCHIVE_OK; }

}  // namespace Host
