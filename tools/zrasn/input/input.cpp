#include "input/input.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/file_output.h"
#include "input/armour.h"
#include "input/dump_lines.h"
#include "input/envelopes.h"
#include "input/text_decoder.h"
#include "json/base/envelope.h"
#include "json/base/hex.h"
#include "json/base/text.h"

namespace zr::tool {

namespace {

constexpr size_t in_memory = size_t{1} << 20;  // octets that are kept in a block
constexpr size_t chunk = 65536;                // octets that are read at once

// Octets that repeated lines of a dump may stand for, unless the input is said to be one.
constexpr uint64_t most_repeated = uint64_t{16} << 20;

class descriptor {
public:
    explicit descriptor(int number) : number_(number) {}
    ~descriptor() {
        if (number_ > STDERR_FILENO) ::close(number_);
    }
    descriptor(const descriptor&) = delete;
    descriptor& operator=(const descriptor&) = delete;
    int get() const { return number_; }

private:
    int number_;
};

}  // namespace

octets_input::~octets_input() {
    if (mapping_ != nullptr) munmap(mapping_, mapped_);
    std::free(block_);
}

octets_input::octets_input(octets_input&& other) noexcept { *this = std::move(other); }

octets_input& octets_input::operator=(octets_input&& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
    std::swap(mapping_, other.mapping_);
    std::swap(mapped_, other.mapped_);
    std::swap(block_, other.block_);
    std::swap(label_, other.label_);
    std::swap(form_, other.form_);
    std::swap(header_size_, other.header_size_);
    std::swap(remark_, other.remark_);
    return *this;
}

void octets_input::forget(size_t offset) const {
    if (mapping_ == nullptr || offset > mapped_) return;
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    madvise(mapping_, offset / page * page, MADV_DONTNEED);  // they come back from the file
}

octets_input octets_input::view(const unsigned char* data, size_t size, std::string label) {
    octets_input some;
    some.data_ = data;
    some.size_ = size;
    some.label_ = std::move(label);
    if (has_header(data, size)) some.header_size_ = envelope_header_octets;
    return some;
}

octets_input octets_input::part(size_t offset, size_t size, const std::string& name) const {
    octets_input some = view(data_ + offset, size, label_ + ": " + name);
    some.form_ = form_;
    return some;
}

namespace {

// A mapped file that is shortened, or cannot be read, shows as a signal when its octets are looked at.
char shortened_message[4096];
size_t shortened_size = 0;
const char* mapping_begin = nullptr;
size_t mapping_size = 0;

extern "C" void on_bus_error(int signal, siginfo_t* about, void*) {
    const char* at = static_cast<const char*>(about->si_addr);
    if (at >= mapping_begin && at < mapping_begin + mapping_size) {
        [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, shortened_message, shortened_size);
        _exit(exit_io);
    }
    std::signal(signal, SIG_DFL);  // and the fault comes again
}

void watch_mapping(const void* mapping, size_t size, const std::string& label) {
    const std::string message = label + ": shortened, or not readable, while it was read\n";
    shortened_size = message.copy(shortened_message, sizeof(shortened_message));
    mapping_begin = static_cast<const char*>(mapping);
    mapping_size = size;
    struct sigaction action = {};
    action.sa_sigaction = on_bus_error;
    action.sa_flags = SA_SIGINFO;
    sigaction(SIGBUS, &action, nullptr);
}

// Whether a length may stand before an envelope here.
bool may_be_prefixed(const unsigned char* octets, size_t count) {
    for (size_t length_octets : {size_t{2}, size_t{4}})
        if (count > length_octets && has_header(octets + length_octets, count - length_octets)) return true;
    return false;
}

// Whether JSON may begin so.
bool may_be_json(std::string_view text) {
    const size_t first = text.find_first_not_of(" \t\r\n");
    return first == text.npos || std::strchr("{[\"tfn-0123456789\xEF", text[first]) != nullptr;
}

}  // namespace

// input_builder reads a file and undoes its form on the way.
class input_builder {
public:
    input_builder(const std::string& file, std::string label, wanted_input wanted, unsigned version)
        : wanted_(wanted),
          version_(version),
          file_(file == "-" ? STDIN_FILENO : ::open(file.c_str(), O_RDONLY | O_CLOEXEC)) {
        made_.label_ = std::move(label);
        if (file_.get() < 0) fail();
        announce_wait(file);
    }

    octets_input build(input_form form) {
        buffer_ = std::make_unique<unsigned char[]>(chunk);
        size_t count = read_chunk();
        if (form == input_form::automatic)
            form = has_dump(text(), count != chunk) ? input_form::dump : recognise(text());
        else if (form == input_form::dump)
            dump_.emplace(most_encoding_octets);
        if (form == input_form::dump && !dump_) dump_.emplace(most_repeated);
        armoured_ = form == input_form::base64 && has_armour(text());
        if (form == input_form::raw) {
            if (!map_all(count)) {
                for (; count != 0 && !hopeless_; count = read_chunk())
                    append(buffer_.get(), count);
            }
        } else {
            made_.form_ = dump_ ? "dump" : form == input_form::hex ? "hex" : armoured_ ? "armour" : "base64";
            decoder_ = text_decoder(form);
            for (; count != 0 && !hopeless_; count = read_chunk())
                armoured_ || dump_ ? undo_lines(count) : undo(text(), read_);
            if (!hopeless_) finish_text();
        }
        return finish();
    }

private:
    [[noreturn]] void fail() const { throw input_error{exit_io, made_.label_ + ": " + std::strerror(errno)}; }
    [[noreturn]] void refuse(size_t at, const std::string& what) const {
        throw input_error{exit_refused, made_.label_ + ":" + std::to_string(at) + ": " + what};
    }

    // Fills the buffer as far as the file goes.
    size_t read_chunk() {
        read_ += filled_;
        filled_ = 0;
        while (filled_ != chunk) {
            const ssize_t count = ::read(file_.get(), buffer_.get() + filled_, chunk - filled_);
            if (count < 0 && errno == EINTR) continue;
            if (count < 0) fail();
            if (count == 0) break;
            filled_ += static_cast<size_t>(count);
        }
        return filled_;
    }

    std::string_view text() const { return {reinterpret_cast<const char*>(buffer_.get()), filled_}; }

    // Text is what has nothing else in its first chunk. Of digits that could be either, hexadecimal is meant.
    static input_form recognise(std::string_view text) {
        if (has_armour(text)) return input_form::base64;
        bool hex = true, base64 = true, any = false;
        for (char c : text) {
            if (is_space(c)) continue;
            any = true;
            hex = hex && (hex_digit(c) >= 0 || c == ':' || c == ',' || c == 'x' || c == 'X');
            base64 = base64 && (base64_digit(c) >= 0 || c == '=');
            if (!hex && !base64) break;
        }
        if (!any || (!hex && !base64)) return input_form::raw;
        return hex ? input_form::hex : input_form::base64;
    }

    void append(const unsigned char* octets, size_t count) {
        check(octets, count);
        if (spool_ == nullptr && made_.size_ + count > in_memory) start_spool();
        if (spool_ != nullptr) {
            if (std::fwrite(octets, 1, count, spool_.get()) != count) spool_failed();
        } else {
            if (made_.block_ == nullptr) {
                made_.block_ = static_cast<unsigned char*>(std::malloc(in_memory));
                if (made_.block_ == nullptr) throw std::bad_alloc();
            }
            std::memcpy(made_.block_ + made_.size_, octets, count);
        }
        made_.size_ += count;
    }

    void check(const unsigned char* octets, size_t count) {
        if (wanted_ == wanted_input::json) {
            const std::string_view text(reinterpret_cast<const char*>(octets), count);
            hopeless_ = text.find('\0') != text.npos || (made_.size_ == 0 && !may_be_json(text));
        } else if (wanted_ == wanted_input::record) {
            if (made_.size_ == 0 && count != 0)
                hopeless_ = !may_be_record(octets, count, version_) && !may_be_prefixed(octets, count);
            check_size(made_.size_ + count);
        }
    }
    void check_size(uint64_t size) const {
        if (wanted_ != wanted_input::record || size <= most_encoding_octets) return;
        throw input_error{exit_refused, made_.label_ + ": more than " + std::to_string(most_encoding_octets) +
                                            " octets, which no encoding of a record has"};
    }

    [[noreturn]] static void spool_failed() {
        throw input_error{exit_io, std::string("temporary file: ") + std::strerror(errno)};
    }
    void start_spool() {
        spool_.reset(std::tmpfile());
        if (spool_ == nullptr) spool_failed();
        if (std::fwrite(made_.block_, 1, made_.size_, spool_.get()) != made_.size_) spool_failed();
        std::free(made_.block_);
        made_.block_ = nullptr;
    }

    // Plain files of some size need not be read.
    bool map_all(size_t count) {
        struct stat status = {};
        if (count < chunk || fstat(file_.get(), &status) != 0 || !S_ISREG(status.st_mode)) return false;
        const off_t end = lseek(file_.get(), 0, SEEK_CUR);
        if (end != static_cast<off_t>(count) || status.st_size <= static_cast<off_t>(in_memory)) return false;
        if (static_cast<uint64_t>(status.st_size) > SIZE_MAX) {
            check_size(static_cast<uint64_t>(status.st_size));
            return false;
        }
        made_.size_ = static_cast<size_t>(status.st_size);
        const bool mapped = map(file_.get());
        // Of envelopes there may be more.
        if (mapped && recognise_framing(made_.data_, made_.size_).how == framing_form::kind::one)
            check_size(made_.size_);
        return mapped;
    }

    bool map(int file) {
        void* mapping = mmap(nullptr, made_.size_, PROT_READ, MAP_PRIVATE, file, 0);
        if (mapping == MAP_FAILED) {
            made_.size_ = 0;
            return false;
        }
        made_.mapping_ = mapping;
        made_.mapped_ = made_.size_;
        made_.data_ = static_cast<const unsigned char*>(mapping);
        watch_mapping(mapping, made_.size_, made_.label_);
        return true;
    }

    // Decodes a text, which is at `at` in the file.
    void undo(std::string_view text, size_t at) {
        unsigned char octets[4096];
        const char* next = text.data();
        const char* const end = next + text.size();
        while (next != end && !hopeless_) {
            append(octets, decoder_.decode(next, end, octets, sizeof(octets)));
            if (decoder_.refused()) refuse(at + static_cast<size_t>(next - text.data()), decoder_.problem());
        }
    }

    void undo_lines(size_t count) {
        for (size_t i = 0; i < count && !hopeless_; ++i) {
            if (buffer_[i] == '\n')
                take_line(read_ + i - line_.size());
            else if (line_ += static_cast<char>(buffer_[i]); line_.size() > chunk)
                refuse(read_ + i, "a line too long for " + std::string(made_.form_));
        }
    }

    // A line of armour or of a dump, which is at `at` in the file.
    void take_line(size_t at) {
        std::string_view line = line_;
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        if (dump_) {
            if (!dump_->take(line, appender())) refuse(at, dump_->problem());
        } else {
            if (armour_.take(line)) undo(line, at);
            if (!armour_.problem().empty()) refuse(at, armour_.problem());
            if (made_.remark_.empty() && !armour_.remark().empty())
                made_.remark_ = made_.label_ + ":" + std::to_string(at) + ": " + armour_.remark();
        }
        line_.clear();
    }

    dump_lines::receiver appender() {
        return [this](const unsigned char* octets, size_t count) {
            if (!hopeless_) append(octets, count);
        };
    }

    void finish_text() {
        if (armoured_ || dump_) take_line(read_ - line_.size());
        if (dump_ && !dump_->finish(appender())) refuse(read_, dump_->problem());
        if (armoured_ && !armour_.finish()) refuse(read_, armour_.problem());
        if (!decoder_.finish()) refuse(read_, decoder_.problem());
    }

    octets_input finish() {
        if (spool_ != nullptr) {
            if (std::fflush(spool_.get()) != 0) spool_failed();
            if (!map(fileno(spool_.get()))) spool_failed();
        } else if (made_.mapping_ == nullptr) {
            static const unsigned char nothing = 0;
            made_.data_ = made_.block_ != nullptr ? made_.block_ : &nothing;
        }
        const unsigned char* data = made_.data_;
        if (has_header(data, made_.size_)) made_.header_size_ = envelope_header_octets;
        return std::move(made_);
    }

    struct closer {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    const wanted_input wanted_;
    const unsigned version_;  // of a record's envelope
    descriptor file_;
    octets_input made_;
    std::unique_ptr<std::FILE, closer> spool_;
    std::unique_ptr<unsigned char[]> buffer_;
    size_t filled_ = 0;      // octets in the buffer
    size_t read_ = 0;        // octets of the file that lie before it
    bool hopeless_ = false;  // the octets are not what is wanted: no more of them are read
    bool armoured_ = false;
    armour armour_;
    std::optional<dump_lines> dump_;  // what the input is
    std::string line_;                // of the armour or dump, as far as read
    text_decoder decoder_{input_form::hex};
};

octets_input read_input(const std::string& file, input_form form, wanted_input wanted, unsigned version) {
    return input_builder(file, input_label(file), wanted, version).build(form);
}

void announce_wait(const std::string& file) {
    if (file == "-" && isatty(STDIN_FILENO) != 0 && isatty(STDERR_FILENO) != 0)
        std::fputs("zrasn: waiting for input at the terminal (Ctrl-D ends it)\n", stderr);
}

std::string input_label(const std::string& file) { return file == "-" ? "standard input" : file_label(file); }

}  // namespace zr::tool
