// Damages a database file at the places that SQLite reads first: the headers of its pages, the pointers between them
// and the records. Bytes changed at random mostly make the first page invalid, so that SQLite reads nothing else.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <span>
#include <string_view>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned int seed);

namespace {

using namespace std::string_view_literals;

constexpr std::size_t PageSize = 512;
constexpr std::size_t FileHeaderSize = 100;

// The beginning of a file with pages of 512 bytes and without a write-ahead log.
constexpr std::string_view FileHeader = "SQLite format 3\0\x02\0\x01\x01\0\x40\x20\x20"sv;

class Damage {
public:
    Damage(std::uint8_t* data, std::size_t size, std::size_t maxSize, unsigned int seed)
        : m_data(data), m_size(size), m_maxSize(maxSize), m_random(seed)
    {}

    std::size_t Apply()
    {
        if (m_size < PageSize || Below(10) == 0) {
            m_size = LLVMFuzzerMutate(m_data, m_size, m_maxSize);
        } else {
            for (std::size_t left = 1 + Below(3); left > 0; --left) {
                DamagePage();
            }
        }
        if (Below(20) != 0) {
            RestoreHeader();
        }
        return m_size;
    }

private:
    std::size_t Below(std::size_t count) { return m_random() % count; }

    std::size_t Pages() const { return m_size / PageSize; }

    std::span<std::uint8_t> SomePage() { return {m_data + Below(Pages()) * PageSize, PageSize}; }

    void Put(std::span<std::uint8_t> page, std::size_t offset, std::size_t value, std::size_t bytes)
    {
        for (; bytes > 0 && offset + bytes <= page.size(); --bytes) {
            page[offset + bytes - 1] = static_cast<std::uint8_t>(value);
            value >>= 8;
        }
    }

    void DamagePage()
    {
        const std::span<std::uint8_t> page = SomePage();
        const std::size_t header = page.data() == m_data ? FileHeaderSize : 0;
        switch (Below(8)) {
        case 0:
            std::ranges::copy(SomePage(), page.begin());
            break;
        case 1: // a byte of the page header: perhaps the kind, the number of cells, or where they begin
            Put(page, header + Below(8), Below(2) == 0 ? Below(256) : 0xFFFF, 1 + Below(2));
            break;
        case 2: // where a cell begins
            Put(page, header + 8 + 2 * Below(20), Below(PageSize + 20), 2);
            break;
        case 3: // the last child, the next free page, or the page with the rest of a long record
            Put(page, Below(2) == 0 ? header + 8 : header, Below(Pages() + 2), 4);
            break;
        case 4: // a page number anywhere
            Put(page, Below(PageSize), Below(Pages() + 2), 4);
            break;
        case 5:
            ChangeSize();
            break;
        default: {
            const std::size_t begin = Below(PageSize);
            const std::size_t size = std::min(1 + Below(64), PageSize - begin);
            LLVMFuzzerMutate(page.data() + begin, size, size);
            break;
        }
        }
    }

    void ChangeSize()
    {
        if (Below(2) == 0 && m_size + PageSize <= m_maxSize) {
            std::copy_n(SomePage().data(), PageSize, m_data + m_size);
            m_size += PageSize;
        } else if (m_size >= 2 * PageSize) {
            m_size -= PageSize;
        }
    }

    void RestoreHeader()
    {
        if (m_size < PageSize) {
            return;
        }
        std::ranges::copy(FileHeader, m_data);
        if (Below(4) != 0) { // the number of pages, which is valid only if the two change counters are equal
            Put({m_data, FileHeaderSize}, 28, Pages(), 4);
            std::copy_n(m_data + 24, 4, m_data + 92);
        }
    }

    std::uint8_t* m_data;
    std::size_t m_size;
    std::size_t m_maxSize;
    std::minstd_rand m_random;
};

} // namespace

std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize, unsigned int seed)
{
    return Damage(data, size, maxSize, seed).Apply();
}
