#include "output/timelines/timeline_writer.h"

#include <charconv>
#include <cstring>
#include <streambuf>
#include <string>
#include <string_view>

#include "base/digits.h"
#include "base/text.h"
#include "base/time_value.h"
#include "base/time_writer.h"
#include "output/cell_text.h"
#include "output/path_alias.h"
#include "output/prefetch.h"
#include "output/row_buffer.h"
#include "output/short_copy.h"
#include "output/timelines/timeline_fields.h"
#include "output/timelines/timeline_text.h"

namespace zanvik {
namespace {

// Room for the numbers, the time and the blanks and bars around them.
constexpr std::size_t fixed_room = 256;

bool has_line_end(std::string_view text) {
  return text.find('\n') != text.npos || text.find('\r') != text.npos;
}

void clean(std::string& text, const field_style& style) {
  if (style.separator_char == 0) return;
  replace_char(text, style.separator_char, style.separator_substitute, false);
}

// Lines of the log2timeline form.
class timeline_writer {
 public:
  timeline_writer(row_buffer& out, field_plans& plans, const output_format& format,
                  const write_context& context);

  void write(const LogRecord& record);

 private:
  void renew_provider(const LogRecord& record);
  std::string log_part() const;
  char* put_time(char* at, std::uint64_t filetime);
  char* put_desc(char* at, const field_plan& plan);
  char* put_notes(char* at, const LogRecord& record);

  row_buffer& out_;
  const output_format& format_;
  const write_context& context_;
  field_style style_;
  field_plans& plans_;
  field_values values_;
  cell_time_formatter times_;
  std::size_t row_room_ = 0;  // the size of the current row without the list of fields

  // Pieces of every line, in order, with the separators around them.
  std::string lead_;        // after the time, up to the source type
  std::string event_part_;  // after the source type, up to the host
  std::string id_part_;     // after the host, up to the event ID
  std::string tail_;        // after the notes, up to the record number

  // Pieces that depend on the provider and on the record being from slack, and what they were made
  // for.
  std::string provider_part_;  // after the event ID, up to the list of fields
  std::string members_;        // of the notes, without the offset's
  std::string notes_;          // if the offset is not shown
  const std::string* provider_ = nullptr;
  bool from_slack_ = false;
  std::string log_part_;  // after the list of fields, up to the notes

  std::string scratch_;
};

timeline_writer::timeline_writer(row_buffer& out, field_plans& plans, const output_format& format,
                                 const write_context& context)
    : out_(out),
      format_(format),
      context_(context),
      style_(field_style_of(format, context)),
      plans_(plans),
      times_(format.descriptor) {
  const std::string& separator = format.csv_separator;
  lead_ = separator + "UTC" + separator + "M..B" + separator +
          (context.log.kind == log_kind::evtx ? "EVTX" : "EVT") + separator;
  event_part_ = separator + "Event Logged" + separator + std::string(context.username) + separator;
  id_part_ = separator + "Event ID: ";
  log_part_ = log_part();
  tail_ = separator + std::string(context.program_name) + " (morvane)" + separator + "Record# ";
}

void timeline_writer::write(const LogRecord& record) {
  if (!is_valid_filetime(record.time)) return;
  const field_plan& plan = plans_.of(*record.shape);
  values_.read(record);
  const bool from_slack = context_.inc_slack && (record.flags & record_plain_or_slack) != 0;
  if (record.provider != provider_ || from_slack != from_slack_) {
    from_slack_ = from_slack;
    renew_provider(record);
  }
  const std::string_view channel =
      context_.log.channel.empty() ? values_.of(plan.channel) : context_.log.channel;
  const std::string_view host = values_.of(plan.host);
  row_room_ = fixed_room + 2 * format_.csv_separator.size() + lead_.size() + channel.size() +
              event_part_.size() + host.size() + id_part_.size() + provider_part_.size() +
              log_part_.size() + members_.size() + notes_.size() + tail_.size();

  char* at = out_.room(row_room_ + plan.room + values_.total_bytes());
  at = put_time(at, record.time);
  at = put_text(put_text(at, lead_), channel);
  at = put_text(put_text(at, event_part_), host);
  at = write_decimal(put_text(at, id_part_), record.event_id);
  at = put_desc(put_text(at, provider_part_), plan);
  at = put_notes(put_text(at, log_part_), record);
  at = write_decimal(put_text(at, tail_), record.record_number);
  if (format_.row_newline) *at++ = '\n';
  out_.commit(at);
}

void timeline_writer::renew_provider(const LogRecord& record) {
  provider_ = record.provider;
  provider_part_.clear();
  members_.clear();
  if (from_slack_) members_ = "\"slack\":\"true\"";
  if (!provider_->empty()) {
    provider_part_ = " : " + *provider_;
    if (!members_.empty()) members_ += "; ";
    members_ += "\"Provider\":\"" + *provider_ + '"';
  }
  clean(provider_part_, style_);
  clean(members_, style_);
  provider_part_ += format_.csv_separator;
  notes_ = members_.empty() ? std::string() : mark_line_ends('{' + members_ + '}');
}

std::string timeline_writer::log_part() const {
  std::string path = apply_alias(format_, context_.log.path);
  clean(path, style_);
  const std::string inode = inode_text(context_.log.inode, format_.base16);
  const std::string& separator = format_.csv_separator;
  return separator + "2" + separator + path + separator + inode + separator;
}

char* timeline_writer::put_time(char* at, std::uint64_t filetime) {
  // Also false for a descriptor without separator, although the texts are there.
  (void)times_.format(filetime);
  if (format_.pair_datetime) {
    if (!format_.no_whitespace) *at++ = ' ';
    at = put_text(at, times_.date());
    *at++ = ' ';
  } else {
    at = put_text(put_text(at, times_.date()), format_.csv_separator);
    if (!format_.no_whitespace) *at++ = ' ';
  }
  return put_text(at, times_.time());
}

char* timeline_writer::put_desc(char* at, const field_plan& plan) {
  char* const begin = at;
  bool line_ends = false;
  at = values_.put_list(at, plan, style_, line_ends);
  if (at != begin) --at;  // the blank after the last field
  if (!line_ends) [[likely]] {
    return at;
  }
  // Marks depend on the whole list, and are longer than the line ends they replace.
  const std::string marked =
      mark_line_ends(std::string_view(begin, static_cast<std::size_t>(at - begin)));
  out_.commit(begin);
  return put_text(out_.room(marked.size() + row_room_), marked);
}

char* timeline_writer::put_notes(char* at, const LogRecord& record) {
  if (!context_.show_offsets) return put_text(at, notes_);
  scratch_ = "{\"offset\":\"";
  scratch_ += format_offset(record.file_offset, format_.base16);
  scratch_ += '"';
  if (!members_.empty()) scratch_ += "; ";
  scratch_ += members_;
  scratch_ += '}';
  if (has_line_end(members_)) {
    scratch_ = mark_line_ends(scratch_);
    out_.commit(at);
    at = out_.room(scratch_.size() + row_room_);
  }
  return put_text(at, scratch_);
}

// Lines of the body file.
class body_writer {
 public:
  body_writer(row_buffer& out, field_plans& plans, const output_format& format,
              const write_context& context)
      : out_(out),
        style_(field_style_of(format, context)),
        plans_(plans),
        allparams_(context.allparams),
        log_part_("|" + std::to_string(context.log.inode) + "||0|0|0|") {}

  void write(const LogRecord& record);

 private:
  void renew_provider(const LogRecord& record);

  row_buffer& out_;
  field_style style_;
  field_plans& plans_;
  field_values values_;
  bool allparams_;
  std::string log_part_;  // after the name, up to the times

  std::string provider_part_;  // after the event ID, up to the fields
  const std::string* provider_ = nullptr;
};

void body_writer::write(const LogRecord& record) {
  if (record.provider != provider_) renew_provider(record);
  std::size_t room = fixed_room + provider_part_.size() + log_part_.size();
  const field_plan* plan = nullptr;
  if (allparams_) {
    plan = &plans_.of(*record.shape);
    values_.read(record);
    room += plan->room + values_.total_bytes();
  }
  char* at = put_text(out_.room(room), "0|Event ID: ");
  at = put_text(write_decimal(at, record.event_id), provider_part_);
  if (allparams_) {
    bool line_ends = false;  // not needed; this form keeps them
    at = values_.put_list(put_text(at, ", "), *plan, style_, line_ends) - 2;
  }
  at = put_text(at, log_part_);
  char* const seconds = at;
  at = std::to_chars(at, at + 20, body_seconds(record.time)).ptr;
  const auto size = static_cast<std::size_t>(at - seconds);
  for (int i = 0; i < 3; ++i) {
    *at++ = '|';
    std::memcpy(at, seconds, size);
    at += size;
  }
  *at++ = '\n';
  out_.commit(at);
}

void body_writer::renew_provider(const LogRecord& record) {
  provider_ = record.provider;
  provider_part_ = provider_->empty() ? std::string() : '-' + *provider_;
  clean(provider_part_, style_);
}

// Calls `written` behind the line of each record.
template <typename writer, typename F>
void write_each(writer rows, std::span<const LogRecord* const> records, F&& written) {
  const std::size_t count = records.size();
  for (std::size_t i = 0; i < count; ++i) {
    if (i + records_ahead < count) prefetch_bytes(records[i + records_ahead], sizeof(LogRecord));
    if (i + values_ahead < count) {
      prefetch_bytes(records[i + values_ahead]->values, value_bytes_ahead);
    }
    rows.write(*records[i]);
    written(*records[i]);
  }
}

template <typename F>
void write_lines(row_buffer& buffer, field_plans& plans, std::span<const LogRecord* const> records,
                 const output_format& format, const write_context& context, F&& written) {
  if (format.output_bodyfile) {
    write_each(body_writer(buffer, plans, format, context), records, written);
  } else {
    write_each(timeline_writer(buffer, plans, format, context), records, written);
  }
}

// What is written to it stands in a text.
class text_buffer : public std::streambuf {
 public:
  std::string text;

 protected:
  std::streamsize xsputn(const char* from, std::streamsize count) override {
    text.append(from, static_cast<std::size_t>(count));
    return count;
  }
  int_type overflow(int_type c) override {
    text += traits_type::to_char_type(c);
    return c;
  }
};

}  // namespace

void write_timeline(std::ostream& out, std::span<const LogRecord* const> records,
                    const output_format& format, const write_context& context,
                    bool& header_pending) {
  if (records.empty()) return;
  row_buffer buffer(out);
  if (header_pending) {
    buffer.append(timeline_head(format));
  }
  header_pending = false;
  field_plans plans(field_style_of(format, context));
  write_lines(buffer, plans, records, format, context, [](const LogRecord&) {});
}

void append_timeline(row_buffer& out, field_plans& plans, std::span<const LogRecord* const> records,
                     const output_format& format, const write_context& context) {
  write_lines(out, plans, records, format, context, [](const LogRecord&) {});
}

void render_timeline(std::span<const LogRecord* const> records, const output_format& format,
                     const write_context& context, const line_use& use) {
  text_buffer line;
  std::ostream stream(&line);
  row_buffer buffer(stream);
  field_plans plans(field_style_of(format, context));
  write_lines(buffer, plans, records, format, context, [&](const LogRecord& record) {
    buffer.flush();
    if (!line.text.empty()) use(record, line.text);
    line.text.clear();
  });
}

}  // namespace zanvik
