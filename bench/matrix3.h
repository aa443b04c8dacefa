/// \file
/// 3 x 3 matrices: maps between planes, in homogeneous coordinates.
#pragma once

namespace zepbmp::bench {

struct Matrix3 {
    double entries[9];  ///< row by row

    double operator()(int row, int column) const { return entries[3 * row + column]; }
    double& operator()(int row, int column) { return entries[3 * row + column]; }
};

constexpr Matrix3 kIdentity3 = {1, 0, 0, 0, 1, 0, 0, 0, 1};

struct Vector3 {
    double x, y, z;
};

inline Vector3 operator*(const Matrix3& m, const Vector3& v) {
    const auto row = [&](int i) { return m(i, 0) * v.x + m(i, 1) * v.y + m(i, 2) * v.z; };
    return {row(0), row(1), row(2)};
}

inline Matrix3 operator*(const Matrix3& a, const Matrix3& b) {
    Matrix3 product;
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j)
            product(i, j) = a(i, 0) * b(0, j) + a(i, 1) * b(1, j) + a(i, 2) * b(2, j);
    }
    return product;
}

inline Matrix3 operator*(Matrix3 m, double factor) {
    for (double& entry : m.entries)
        entry *= factor;
    return m;
}

/// Of a matrix that has one.
inline Matrix3 inverse(const Matrix3& m) {
    const auto cofactor = [&](int i, int j) {
        const int i1 = (i + 1) % 3, i2 = (i + 2) % 3, j1 = (j + 1) % 3, j2 = (j + 2) % 3;
        return m(i1, j1) * m(i2, j2) - m(i1, j2) * m(i2, j1);
    };
    const double determinant = m(0, 0) * cofactor(0, 0) + m(0, 1) * cofactor(0, 1) + m(0, 2) * cofactor(0, 2);
    Matrix3 result;
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j)
            result(i, j) = cofactor(j, i) * (1 / determinant);
    }
    return result;
}

}  // namespace zepbmp::bench
