#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <stdexcept>

#include <kvx/ref_counted.h>

/// Views on shared, reference-counted storage.
///
/// Copying an array shares its elements; `copy` duplicates them. Constness is that of a pointer:
/// a const array gives const elements, while a view taken from it may be written to.
/// Sharing ends where an array would have to grow: `resize` and `reserve` that need more elements
/// or another stride first move the array to storage of its own when its block is shared or
/// foreign, so they never write over the elements of another view. Shrinking stays in place.
/// Members that return bool report exhausted memory, or a size that no memory holds, by false and
/// then change nothing; constructors throw std::bad_alloc.
namespace kvx {

namespace detail {

/// offset + stride * (cols - 1) + rows for a non-empty matrix of at most `limit` elements; false
/// when that is larger. The one place where sizes of arrays are multiplied.
inline bool storage_span(std::uint64_t offset, std::uint64_t stride, std::uint64_t rows,
                         std::uint64_t cols, std::uint64_t limit, std::uint64_t& span) noexcept {
    if (rows == 0 || cols == 0) {
        span = offset;
        return offset <= limit;
    }
    if (offset > limit || rows > limit - offset) return false;
    const std::uint64_t left = limit - offset - rows;
    if (stride != 0 && cols - 1 > left / stride) return false;
    span = offset + stride * (cols - 1) + rows;
    return true;
}

} // namespace detail

/// Vector: a view of consecutive elements of a storage block.
template <class T>
class dense1D {
public:
    using value_type = T;

    dense1D() = default;
    /// n elements of value 0.
    explicit dense1D(std::uint64_t n)
        : dense1D(n, T{}) {}
    /// n elements of value v.
    dense1D(std::uint64_t n, T v) {
        if (!resize(n, v)) throw std::bad_alloc();
    }
    /// Shares the elements of the source.
    dense1D(const dense1D&) = default;
    dense1D(dense1D&& other) noexcept { swap(other); }
    dense1D& operator=(const dense1D&) = default;
    dense1D& operator=(dense1D&& other) noexcept {
        dense1D{std::move(other)}.swap(*this);
        return *this;
    }
    ~dense1D() = default;

    /// Sets every element to v.
    dense1D& operator=(T v) noexcept {
        std::fill(begin(), end(), v);
        return *this;
    }

    /// A view of n elements of the caller's memory, which is neither copied nor freed and must
    /// outlive every view of it. Growing moves the vector to memory of its own. `data` is aligned
    /// as T needs it. Throws std::invalid_argument for elements at nullptr.
    static dense1D wrap(T* data, std::uint64_t n) {
        if (!data && n > 0) throw std::invalid_argument("dense1D::wrap");
        if (n > vector_num<T>::max_capacity) throw std::bad_alloc();
        dense1D view;
        view.storage_ = vector_num<T>::wrap(data, n);
        if (!view.storage_) throw std::bad_alloc();
        view.size_ = n;
        return view;
    }

    std::uint64_t size() const noexcept { return size_; }
    bool empty() const noexcept { return size_ == 0; }
    /// Number of elements that fit behind the first one without moving.
    std::uint64_t capacity() const noexcept {
        return storage_ ? storage_->capacity() - offset_ : 0;
    }
    T* data() noexcept { return first(); }
    const T* data() const noexcept { return first(); }
    T& operator[](std::uint64_t i) noexcept { return first()[i]; }
    const T& operator[](std::uint64_t i) const noexcept { return first()[i]; }
    T* begin() noexcept { return first(); }
    T* end() noexcept { return first() + size_; }
    const T* begin() const noexcept { return first(); }
    const T* end() const noexcept { return first() + size_; }

    /// Makes this a view of the elements of src.
    void shallow_copy(const dense1D& src) noexcept { *this = src; }

    /// Copies the elements of src into storage of this vector's own.
    bool copy(const dense1D& src) noexcept {
        dense1D fresh;
        if (!fresh.reserve(src.size_)) return false;
        fresh.size_ = src.size_;
        if (src.size_ > 0) std::memcpy(fresh.first(), src.first(), src.size_ * sizeof(T));
        swap(fresh);
        return true;
    }

    /// Size n; elements that existed keep their values, new ones get v.
    bool resize(std::uint64_t n, T v = T{}) noexcept {
        if (n > size_) {
            if (!reserve(n)) return false;
            std::fill(first() + size_, first() + n, v);
        }
        size_ = n;
        return true;
    }

    /// Makes room for at least n elements, keeping the contents; the storage block becomes at
    /// least `growth` times as large as it was when it has to grow.
    bool reserve(std::uint64_t n, std::uint64_t growth = 1) noexcept {
        if (n <= size_) return true;
        std::uint64_t span = 0;
        if (owns_storage()) {
            return detail::storage_span(offset_, 1, n, 1, vector_num<T>::max_capacity, span) &&
                   storage_->reserve(span, growth, offset_ + size_);
        }
        if (n > vector_num<T>::max_capacity) return false;
        Ptr<vector_num<T>> block = vector_num<T>::make(n);
        if (!block) return false;
        if (size_ > 0) std::memcpy(block->data(), first(), size_ * sizeof(T));
        storage_.swap(block);
        offset_ = 0;
        return true;
    }

    /// Size 0; storage that nothing else uses is kept for reuse, shared or foreign storage let go.
    void clear() noexcept {
        if (owns_storage()) {
            size_ = offset_ = 0;
        } else {
            clear_hard();
        }
    }
    /// Size 0 and the storage released.
    void clear_hard() noexcept { dense1D().swap(*this); }

    /// A view of elements start .. start + n - 1, cut off at the end of this vector.
    dense1D sub_vector(std::uint64_t start, std::uint64_t n) const noexcept {
        dense1D view(*this);
        start = std::min(start, size_);
        view.offset_ += start;
        view.size_ = std::min(n, size_ - start);
        return view;
    }

    void swap(dense1D& other) noexcept {
        storage_.swap(other.storage_);
        std::swap(size_, other.size_);
        std::swap(offset_, other.offset_);
    }

    /// Whether both are views of one storage block.
    bool shares_storage(const dense1D& other) const noexcept {
        return storage_ && storage_.get() == other.storage_.get();
    }

private:
    template <class>
    friend class dense2D;

    T* first() const noexcept { return storage_ ? storage_->data() + offset_ : nullptr; }
    bool owns_storage() const noexcept {
        return storage_ && storage_->ref_count() == 1 && !storage_->foreign();
    }

    Ptr<vector_num<T>> storage_;
    std::uint64_t size_ = 0;
    std::uint64_t offset_ = 0;
};

/// Column-major matrix: element (i, j) lies at offset + i + j * ld of its storage block.
template <class T>
class dense2D {
public:
    using value_type = T;

    dense2D() = default;
    /// rows x cols elements of value 0.
    dense2D(std::uint64_t rows, std::uint64_t cols)
        : dense2D(rows, cols, T{}) {}
    /// rows x cols elements of value v.
    dense2D(std::uint64_t rows, std::uint64_t cols, T v) {
        if (!resize(rows, cols, v)) throw std::bad_alloc();
    }
    /// Shares the elements of the source.
    dense2D(const dense2D&) = default;
    dense2D(dense2D&& other) noexcept { swap(other); }
    dense2D& operator=(const dense2D&) = default;
    dense2D& operator=(dense2D&& other) noexcept {
        dense2D{std::move(other)}.swap(*this);
        return *this;
    }
    ~dense2D() = default;

    /// Sets every element to v.
    dense2D& operator=(T v) noexcept {
        if (empty()) return *this; // of however many columns
        for (std::uint64_t j = 0; j < cols_; ++j)
            std::fill_n(column(j), rows_, v);
        return *this;
    }

    /// A view of the caller's memory, which is neither copied nor freed and must outlive every view
    /// of it: rows x cols elements, columns `ld` elements apart (ld >= rows; 0 means rows).
    /// Growing moves the matrix to memory of its own. `data` is aligned as T needs it. Throws
    /// std::invalid_argument for another ld and for elements at nullptr.
    static dense2D wrap(T* data, std::uint64_t rows, std::uint64_t cols, std::uint64_t ld = 0) {
        if ((ld != 0 && ld < rows) || (!data && rows > 0 && cols > 0))
            throw std::invalid_argument("dense2D::wrap");
        ld = std::max(ld, rows);
        std::uint64_t span = 0;
        if (!detail::storage_span(0, ld, rows, cols, vector_num<T>::max_capacity, span))
            throw std::bad_alloc();
        dense2D view;
        view.storage_ = vector_num<T>::wrap(data, span);
        if (!view.storage_) throw std::bad_alloc();
        view.rows_ = rows;
        view.cols_ = cols;
        view.ld_ = ld;
        return view;
    }

    std::uint64_t rows() const noexcept { return rows_; }
    std::uint64_t cols() const noexcept { return cols_; }
    /// Distance of two neighbouring elements of a row in memory.
    std::uint64_t ld() const noexcept { return ld_; }
    /// Whether rows x cols is 0.
    bool empty() const noexcept { return rows_ == 0 || cols_ == 0; }
    /// Number of columns that fit behind the first element without moving.
    std::uint64_t col_capacity() const noexcept {
        return storage_ ? (storage_->capacity() - offset_) / std::max<std::uint64_t>(ld_, 1) : 0;
    }
    T* data() noexcept { return first(); }
    const T* data() const noexcept { return first(); }
    T& operator()(std::uint64_t i, std::uint64_t j) noexcept { return column(j)[i]; }
    const T& operator()(std::uint64_t i, std::uint64_t j) const noexcept { return column(j)[i]; }

    /// Makes this a view of the elements of src.
    void shallow_copy(const dense2D& src) noexcept { *this = src; }

    /// Copies the elements of src into storage of this matrix's own, without gaps.
    bool copy(const dense2D& src) noexcept {
        dense2D fresh;
        if (!src.moved_to_new_block(src.rows_, src.cols_, fresh)) return false;
        fresh.cols_ = src.cols_;
        swap(fresh);
        return true;
    }

    /// New shape; every element that existed keeps its (i, j) place, new ones get v.
    bool resize(std::uint64_t rows, std::uint64_t cols, T v = T{}) noexcept {
        const std::uint64_t kept_rows = std::min(rows, rows_);
        const std::uint64_t kept_cols = std::min(cols, cols_);
        if ((rows > rows_ || cols > cols_) && !make_room(rows, cols)) return false;
        if (rows > kept_rows) {
            for (std::uint64_t j = 0; j < kept_cols; ++j)
                std::fill(column(j) + kept_rows, column(j) + rows, v);
        }
        if (rows > 0) {
            for (std::uint64_t j = kept_cols; j < cols; ++j)
                std::fill_n(column(j), rows, v);
        }
        rows_ = rows;
        cols_ = cols;
        ld_ = std::max(ld_, rows);
        return true;
    }

    /// Becomes a rows x cols matrix of zeros in storage of its own. Unlike resize, this writes to
    /// no element: on systems that hand out memory when it is first written to, columns that stay 0
    /// take none, however many they are.
    bool make_zeros(std::uint64_t rows, std::uint64_t cols) noexcept {
        std::uint64_t span = 0;
        if (!detail::storage_span(0, rows, rows, cols, vector_num<T>::max_capacity, span))
            return false;
        dense2D fresh;
        fresh.storage_ = vector_num<T>::make_zeros(span);
        if (!fresh.storage_) return false;
        fresh.rows_ = fresh.ld_ = rows;
        fresh.cols_ = cols;
        swap(fresh);
        return true;
    }

    /// Makes room for at least cols columns of rows entries, keeping the contents and the shape.
    bool reserve(std::uint64_t rows, std::uint64_t cols) noexcept {
        return make_room(std::max(rows, rows_), std::max(cols, cols_));
    }

    /// Shape 0 x 0; storage that nothing else uses is kept for reuse, shared or foreign storage let
    /// go.
    void clear() noexcept {
        if (owns_storage()) {
            offset_ = rows_ = cols_ = ld_ = 0;
        } else {
            clear_hard();
        }
    }
    /// Shape 0 x 0 and the storage released.
    void clear_hard() noexcept { dense2D().swap(*this); }

    /// A view of column j; empty when there is no such column.
    dense1D<T> col(std::uint64_t j) const noexcept {
        return j < cols_ ? run(offset_ + j * ld_, rows_) : dense1D<T>();
    }
    /// A view of the nrows x ncols block that begins at (r0, c0), cut off at the edges of this
    /// matrix.
    dense2D sub_matrix(std::uint64_t r0, std::uint64_t c0, std::uint64_t nrows,
                       std::uint64_t ncols) const noexcept {
        dense2D view(*this);
        r0 = std::min(r0, rows_);
        c0 = std::min(c0, cols_);
        view.rows_ = std::min(nrows, rows_ - r0);
        view.cols_ = std::min(ncols, cols_ - c0);
        if (!view.empty()) view.offset_ += r0 + c0 * ld_;
        return view;
    }
    /// A view of the whole storage run of this matrix: from element (0, 0) to the last one, with
    /// the gaps between the columns where ld exceeds rows.
    dense1D<T> as_vector() const noexcept {
        return empty() ? dense1D<T>() : run(offset_, ld_ * (cols_ - 1) + rows_);
    }

    void swap(dense2D& other) noexcept {
        storage_.swap(other.storage_);
        std::swap(offset_, other.offset_);
        std::swap(rows_, other.rows_);
        std::swap(cols_, other.cols_);
        std::swap(ld_, other.ld_);
    }

    /// Whether both are views of one storage block.
    bool shares_storage(const dense2D& other) const noexcept {
        return storage_ && storage_.get() == other.storage_.get();
    }
    bool shares_storage(const dense1D<T>& other) const noexcept {
        return storage_ && storage_.get() == other.storage_.get();
    }

private:
    T* first() const noexcept { return storage_ ? storage_->data() + offset_ : nullptr; }
    T* column(std::uint64_t j) const noexcept { return first() + j * ld_; }
    bool owns_storage() const noexcept {
        return storage_ && storage_->ref_count() == 1 && !storage_->foreign();
    }

    dense1D<T> run(std::uint64_t offset, std::uint64_t n) const noexcept {
        dense1D<T> view;
        view.storage_ = storage_;
        view.offset_ = offset;
        view.size_ = n;
        return view;
    }

    /// Gives `fresh` this matrix's elements and shape in a new block with stride `rows` and room
    /// for `cols` columns.
    bool moved_to_new_block(std::uint64_t rows, std::uint64_t cols, dense2D& fresh) const noexcept {
        std::uint64_t span = 0;
        if (!detail::storage_span(0, rows, rows, cols, vector_num<T>::max_capacity, span))
            return false;
        fresh.storage_ = vector_num<T>::make(span);
        if (!fresh.storage_) return false;
        fresh.rows_ = rows_;
        fresh.ld_ = rows;
        fresh.cols_ = std::min(cols, cols_);
        if (empty()) return true;
        for (std::uint64_t j = 0; j < fresh.cols_; ++j)
            std::memcpy(fresh.column(j), column(j), std::min(rows, rows_) * sizeof(T));
        return true;
    }

    /// Makes room for a rows x cols shape, in place where no other view can notice.
    bool make_room(std::uint64_t rows, std::uint64_t cols) noexcept {
        std::uint64_t span = 0;
        if (owns_storage() && (rows <= ld_ || empty())) {
            const std::uint64_t stride = empty() ? rows : ld_;
            // Whole strides, so that col_capacity counts the last column too.
            if (!detail::storage_span(offset_, stride, stride, cols, vector_num<T>::max_capacity,
                                      span))
                return false;
            const std::uint64_t used = empty() ? 0 : offset_ + ld_ * (cols_ - 1) + rows_;
            if (!storage_->reserve(span, 1, used)) return false;
            ld_ = stride;
            return true;
        }
        if (rows <= rows_ && cols <= cols_) return true;
        dense2D fresh;
        if (!moved_to_new_block(std::max(rows, rows_), cols, fresh)) return false;
        fresh.cols_ = cols_;
        swap(fresh);
        return true;
    }

    Ptr<vector_num<T>> storage_;
    std::uint64_t offset_ = 0;
    std::uint64_t rows_ = 0;
    std::uint64_t cols_ = 0;
    std::uint64_t ld_ = 0;
};

} // namespace kvx
