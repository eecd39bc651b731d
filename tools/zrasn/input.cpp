#include "input.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "hex.h"
#include "text.h"
#include "text_decoder.h"

namespace zr::tool {

namespace {

constexpr size_t in_memory = size_t{1} << 20;  // octets that are kept in a block
constexpr size_t chunk = 65536;                // octets that are read at once

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
    return *this;
}

void octets_input::forget(size_t offset) const {
    if (mapping_ == nullptr || offset > mapped_) return;
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    madvise(mapping_, offset / page * page, MADV_DONTNEED);  // they come back from the file
}

// input_builder reads a file and undoes its form on the way.
class input_builder {
public:
    input_builder(const std::string& file, std::string label)
        : file_(file == "-" ? STDIN_FILENO : ::open(file.c_str(), O_RDONLY | O_CLOEXEC)) {
        made_.label_ = std::move(label);
        if (file_.get() < 0) fail();
    }

    octets_input build(input_form form) {
        buffer_ = std::make_unique<unsigned char[]>(chunk);
        size_t count = read_chunk();
        if (form == input_form::automatic) form = recognise(text());
        armoured_ = form == input_form::base64 && has_armour(text());
        if (form == input_form::raw) {
            if (!map_all(count)) {
                for (; count != 0; count = read_chunk())
                    append(buffer_.get(), count);
            }
        } else {
            made_.form_ = form == input_form::hex ? "hex" : armoured_ ? "armour" : "base64";
            decoder_ = text_decoder(form);
            for (; count != 0; count = read_chunk())
                armoured_ ? undo_armour(count) : undo(text().data(), count, read_);
            finish_text();
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

    // Armour may have text before it, but begins a line.
    static bool has_armour(std::string_view text) {
        const size_t begin = text.find("-----BEGIN ");
        return begin != text.npos && (begin == 0 || text[begin - 1] == '\n') && is_text(text.substr(0, begin));
    }

    static bool is_text(std::string_view text) {
        for (unsigned char c : text)
            if ((c < ' ' && !is_space(static_cast<char>(c))) || c == 0x7F) return false;
        return true;
    }

    void append(const unsigned char* octets, size_t count) {
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
        made_.size_ = static_cast<size_t>(status.st_size);
        return map(file_.get());
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
        return true;
    }

    // Decodes what stands at `text`, which is at `at` in the file.
    void undo(const char* text, size_t count, size_t at) {
        unsigned char octets[4096];
        const char* next = text;
        while (next != text + count) {
            append(octets, decoder_.decode(next, text + count, octets, sizeof(octets)));
            if (decoder_.refused()) refuse(at + static_cast<size_t>(next - text), decoder_.problem());
        }
    }

    // RFC 7468: the first block counts; what stands before and behind it, and header lines in it, do not.
    void undo_armour(size_t count) {
        for (size_t i = 0; i < count; ++i) {
            if (buffer_[i] != '\n') {
                line_ += static_cast<char>(buffer_[i]);
                if (line_.size() > chunk) refuse(read_ + i, "a line too long for armour");
                continue;
            }
            armour_line(read_ + i - line_.size());
        }
    }

    void armour_line(size_t at) {
        if (line_.compare(0, 10, "-----BEGIN") == 0 && armour_ == armour::before) {
            armour_ = armour::inside;
        } else if (line_.compare(0, 8, "-----END") == 0 && armour_ == armour::inside) {
            armour_ = armour::behind;
        } else if (armour_ == armour::inside && line_.find(':') == line_.npos) {
            undo(line_.data(), line_.size(), at);
        }
        line_.clear();
    }

    void finish_text() {
        if (armoured_) {
            armour_line(read_ - line_.size());
            if (armour_ != armour::behind) refuse(read_, "the armour has no -----END line");
        }
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
        if (made_.size_ > 4 && data[0] == 4 && data[2] == 0xAC && data[3] == 0xDC) made_.header_size_ = 4;
        return std::move(made_);
    }

    struct closer {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    enum class armour { before, inside, behind };

    descriptor file_;
    octets_input made_;
    std::unique_ptr<std::FILE, closer> spool_;
    std::unique_ptr<unsigned char[]> buffer_;
    size_t filled_ = 0;  // octets in the buffer
    size_t read_ = 0;    // octets of the file that lie before it
    bool armoured_ = false;
    armour armour_ = armour::before;
    std::string line_;  // of the armour, as far as read
    text_decoder decoder_{input_form::hex};
};

octets_input read_input(const std::string& file, input_form form) {
    return input_builder(file, input_label(file)).build(form);
}

std::string input_label(const std::string& file) { return file == "-" ? "standard input" : printable(file); }

}  // namespace zr::tool
