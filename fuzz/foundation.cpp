#include <memory>
#include <optional>

#include <kvx/lapack.h>

#include "byte_source.h"
#include "fuzzing.h"

/// Sequences of operations on arrays that share storage, beside a plain model of them: an array is
/// its elements, and views have elements in common.
namespace kvx::zelvo::fuzzing {

namespace {

using cell = std::shared_ptr<double>;

struct model {
    std::uint64_t rows = 0, cols = 0;
    std::vector<cell> cells;

    bool empty() const { return rows == 0 || cols == 0; }
    const cell& at(std::uint64_t i, std::uint64_t j) const { return cells[i + j * rows]; }

    /// The elements of a block that begins somewhere, as far as there are any; others are new.
    model part(std::uint64_t r0, std::uint64_t c0, std::uint64_t n, std::uint64_t m,
               double v = 0) const {
        model result{n, m, {}};
        if (result.empty()) return result;
        for (std::uint64_t j = c0; j < c0 + m; ++j)
            for (std::uint64_t i = r0; i < r0 + n; ++i)
                result.cells.push_back(i < rows && j < cols ? at(i, j)
                                                            : std::make_shared<double>(v));
        return result;
    }
    /// Elements of its own.
    model copy() const {
        model result = *this;
        for (cell& c : result.cells)
            c = std::make_shared<double>(*c);
        return result;
    }
    /// What growing gives: elements of its own; shrinking alone keeps them.
    model resized(std::uint64_t n, std::uint64_t m, double v) const {
        return n > rows || m > cols ? part(0, 0, n, m, v).copy() : part(0, 0, n, m);
    }
};

struct matrix_slot {
    dense2D<double> array;
    model like;
};
struct vector_slot {
    dense1D<double> array;
    model like; ///< one row of elements a column, so rows is the size
};

enum class memory { enough, lacking, unknown };
/// Sizes in between might be had from some systems and are not tried.
memory for_elements(std::uint64_t rows, std::uint64_t cols) {
    if (rows == 0 || cols == 0) return memory::enough;
    const auto elements = static_cast<long double>(rows) * static_cast<long double>(cols);
    return elements < 4096      ? memory::enough
           : elements > 0x1p48L ? memory::lacking
                                : memory::unknown;
}

class sequence {
public:
    explicit sequence(byte_source source)
        : bytes_(std::move(source)) {
        for (double& x : memory_)
            caller_.cells.push_back(std::make_shared<double>(x));
        caller_.rows = std::size(memory_), caller_.cols = 1;
    }
    void run() {
        for (int i = 0; i < 64 && !bytes_.empty(); ++i) {
            if (bytes_.byte() % 2 == 0)
                change(matrices_[bytes_.below(4)]);
            else
                change(vectors_[bytes_.below(4)]);
            compare();
        }
    }

private:
    std::uint64_t size() {
        if (!bytes_.one_in(8)) return bytes_.below(9);
        const std::uint64_t top =
            bytes_.one_of({std::uint64_t{1} << 32, std::uint64_t{1} << 60, std::uint64_t{1} << 61,
                           std::uint64_t{1} << 63, std::uint64_t{0}});
        return top + bytes_.below(5) - 2;
    }

    void change(matrix_slot& slot) {
        matrix_slot& other = matrices_[bytes_.below(4)];
        const std::uint64_t rows = size(), cols = size();
        const double v = bytes_.below(8);
        dense2D<double>& m = slot.array;
        const auto expect = [&](bool done, std::uint64_t n, std::uint64_t k) {
            demand(done == (for_elements(n, k) == memory::enough), "memory is had or not");
            return done;
        };
        const std::uint64_t kept_rows = std::max(rows, m.rows()),
                            kept_cols = std::max(cols, m.cols());
        switch (bytes_.below(14)) {
        case 0:
            if (for_elements(rows, cols) == memory::unknown) break;
            // An array that is shared is moved with the rows that it has.
            if (cols > m.cols() && for_elements(kept_rows, cols) != memory::enough) break;
            if (expect(m.resize(rows, cols, v), rows, cols))
                slot.like = slot.like.resized(rows, cols, v);
            break;
        case 1:
            if (for_elements(kept_rows, kept_cols) == memory::unknown) break;
            if (expect(m.reserve(rows, cols), kept_rows, kept_cols))
                if (rows > m.rows() || cols > m.cols()) slot.like = slot.like.copy();
            break;
        case 2:
            if (for_elements(rows, cols) == memory::unknown) break;
            if (expect(m.make_zeros(rows, cols), rows, cols))
                slot.like = model().resized(rows, cols, 0);
            break;
        case 3:
            demand(m.copy(other.array), "small arrays are copied");
            slot.like = other.like.copy();
            break;
        case 4:
            if (bytes_.one_in(2))
                m.shallow_copy(other.array);
            else
                m = other.array;
            slot.like = model(other.like);
            break;
        case 5: {
            const std::uint64_t r0 = size(), c0 = size();
            m = other.array.sub_matrix(r0, c0, rows, cols);
            const model& from = other.like;
            const std::uint64_t r = std::min(r0, from.rows), c = std::min(c0, from.cols);
            slot.like = model(
                from.part(r, c, std::min(rows, from.rows - r), std::min(cols, from.cols - c)));
            break;
        }
        case 6:
            m.swap(other.array);
            std::swap(slot.like, other.like);
            break;
        case 7:
            m = v;
            for (cell& c : slot.like.cells)
                *c = v;
            break;
        case 8:
            if (bytes_.one_in(2))
                m.clear();
            else
                m.clear_hard();
            slot.like = {};
            break;
        case 9:
            wrap(slot);
            break;
        case 10:
            if (&slot == &other) break;
            m = std::move(other.array);
            demand(other.array.empty(), "what was moved from is empty");
            slot.like = std::exchange(other.like, {});
            break;
        case 11:
            if (for_elements(rows, cols) == memory::unknown) break;
            try {
                m = dense2D<double>(rows, cols, v);
                slot.like = model().resized(rows, cols, v);
                expect(true, rows, cols);
            } catch (const std::bad_alloc&) {
                expect(false, rows, cols);
            }
            break;
        default:
            if (m.empty()) break;
            const std::uint64_t i = bytes_.below(m.rows()), j = bytes_.below(m.cols());
            m(i, j) = *slot.like.at(i, j) = v;
        }
    }

    /// A view of the caller's memory.
    void wrap(matrix_slot& slot) {
        const std::uint64_t rows = bytes_.below(6), cols = bytes_.below(6), ld = bytes_.below(9),
                            start = bytes_.below(8);
        try {
            slot.array = dense2D<double>::wrap(memory_ + start, rows, cols, ld);
        } catch (const std::invalid_argument&) {
            return demand(ld != 0 && ld < rows, "columns that do not fit are refused");
        }
        slot.like = {rows, cols, {}};
        for (std::uint64_t j = 0; j < cols; ++j)
            for (std::uint64_t i = 0; i < rows; ++i)
                slot.like.cells.push_back(caller_.cells[start + i + j * (ld == 0 ? rows : ld)]);
    }

    void change(vector_slot& slot) {
        vector_slot& other = vectors_[bytes_.below(4)];
        matrix_slot& matrix = matrices_[bytes_.below(4)];
        const std::uint64_t n = size();
        const double v = bytes_.below(8);
        dense1D<double>& a = slot.array;
        const memory for_n = for_elements(n, 1);
        switch (bytes_.below(12)) {
        case 0:
            if (for_n == memory::unknown) break;
            demand(a.resize(n, v) == (for_n == memory::enough), "memory is had or not");
            if (for_n == memory::enough) slot.like = slot.like.resized(n, 1, v);
            break;
        case 1: {
            if (for_n == memory::unknown) break;
            const std::uint64_t growth = bytes_.one_in(2) ? size() : 2;
            if (growth > 8 && growth < std::uint64_t{1} << 60) break;
            if (!a.reserve(n, growth))
                break; // a growth that is too large counts for nothing or fails
            demand(for_n == memory::enough && a.capacity() >= n, "what was reserved is there");
            if (n > a.size()) slot.like = slot.like.copy();
            break;
        }
        case 2:
            demand(a.copy(other.array), "small arrays are copied");
            slot.like = other.like.copy();
            break;
        case 3:
            a.shallow_copy(other.array);
            slot.like = model(other.like);
            break;
        case 4: {
            const std::uint64_t start = size(), from = std::min(start, other.like.rows);
            a = other.array.sub_vector(start, n);
            slot.like = model(other.like.part(from, 0, std::min(n, other.like.rows - from), 1));
            break;
        }
        case 5:
            a.swap(other.array);
            std::swap(slot.like, other.like);
            break;
        case 6: {
            a = matrix.array.col(n);
            slot.like =
                n < matrix.like.cols ? matrix.like.part(0, n, matrix.like.rows, 1) : model();
            break;
        }
        case 7: {
            const auto& m = matrix.array;
            const auto run = m.as_vector();
            demand(run.size() == (m.empty() ? 0 : m.ld() * (m.cols() - 1) + m.rows()),
                   "the run ends with the last element");
            if (!m.empty() && m.ld() != m.rows()) break;
            a = run;
            slot.like = {run.size(), 1, matrix.like.cells};
            break;
        }
        case 8:
            if (bytes_.one_in(2))
                a.clear();
            else
                a.clear_hard();
            slot.like = {};
            break;
        case 9: {
            const std::uint64_t start = bytes_.below(32), count = bytes_.below(16);
            a = dense1D<double>::wrap(memory_ + start, count);
            slot.like = caller_.part(start, 0, count, 1);
            break;
        }
        case 10:
            a = v;
            for (cell& c : slot.like.cells)
                *c = v;
            break;
        default:
            if (a.empty()) break;
            const std::uint64_t i = bytes_.below(a.size());
            a[i] = *slot.like.at(i, 0) = v;
        }
        if (slot.like.rows == 0) slot.like = {};
    }

    void compare() {
        for (matrix_slot& slot : matrices_) {
            const dense2D<double>& m = slot.array;
            demand(m.rows() == slot.like.rows && m.cols() == slot.like.cols, "shapes agree");
            demand(m.empty() || m.ld() >= m.rows(), "columns do not overlap");
            demand(m.empty() || m.col_capacity() + 1 >= m.cols(), "the elements have room");
            for (std::uint64_t k = 0; k < slot.like.cells.size(); ++k)
                demand(m(k % m.rows(), k / m.rows()) == *slot.like.cells[k], "elements agree");
        }
        for (vector_slot& slot : vectors_) {
            demand(slot.array.size() == slot.like.rows &&
                       slot.array.capacity() >= slot.array.size(),
                   "sizes agree");
            for (std::uint64_t k = 0; k < slot.like.cells.size(); ++k)
                demand(slot.array[k] == *slot.like.cells[k], "elements agree");
        }
        for (std::uint64_t k = 0; k < std::size(memory_); ++k)
            demand(memory_[k] == *caller_.cells[k], "the caller's memory is as it was");
    }

    byte_source bytes_;
    double memory_[64] = {};
    model caller_;
    matrix_slot matrices_[4];
    vector_slot vectors_[4];
};

/// Eigenvalues ascend and the vectors solve the equations, where the entries are of one size.
void examine_eigenvalues(byte_source& bytes) {
    const int n = static_cast<int>(bytes.below(6));
    const bool mild = bytes.byte() % 2 == 0;
    std::vector<double> packed(static_cast<std::size_t>(n * (n + 1) / 2)), values(6), vectors(36),
        work(18);
    for (double& x : packed)
        x = mild ? bytes.below(16) - 8.0 : bytes.number();
    const std::vector<double> entries = packed;
    int info = 0;
    lapack::dspev('V', 'U', n, packed.data(), values.data(), vectors.data(), 6, work.data(), info);
    demand(info >= 0, "the arguments are right");
    if (!mild) return;
    demand(info == 0 && std::is_sorted(values.begin(), values.begin() + n), "eigenvalues ascend");
    for (int k = 0; k < n; ++k)
        for (int i = 0; i < n; ++i) {
            double sum = 0;
            for (int j = 0; j < n; ++j) {
                const int low = std::min(i, j), high = std::max(i, j);
                sum += entries[static_cast<std::size_t>(low + high * (high + 1) / 2)] *
                       vectors[static_cast<std::size_t>(j + 6 * k)];
            }
            demand(std::abs(sum - values[static_cast<std::size_t>(k)] *
                                      vectors[static_cast<std::size_t>(i + 6 * k)]) < 1e-10,
                   "vectors solve the equations");
        }
}

void examine_blocks(byte_source& bytes) {
    const std::uint64_t size = bytes.one_in(4) ? ~std::uint64_t{0} - bytes.byte() : bytes.byte();
    std::byte* const block = __vector_num_alloc(size);
    std::byte* const zeros = __vector_num_alloc_zeros(size);
    demand((block != nullptr || size == 0) == (size < 256), "small blocks are had");
    if (zeros && size > 0)
        demand(std::all_of(zeros, zeros + size, [](std::byte b) { return b == std::byte{0}; }),
               "zeros are zero");
    __vector_num_free(block);
    __vector_num_free(zeros);
}

} // namespace

} // namespace kvx::zelvo::fuzzing

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kvx::zelvo::fuzzing;
    byte_source bytes(data, size);
    switch (bytes.below(8)) {
    case 6:
        examine_eigenvalues(bytes);
        break;
    case 7:
        examine_blocks(bytes);
        break;
    default:
        sequence(bytes).run();
    }
    return 0;
}
