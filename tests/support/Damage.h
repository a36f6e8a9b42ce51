#pragma once

#include <QByteArray>

#include <algorithm>
#include <random>

/// `bytes`, which are not none, with damage by chance, the same for the same `seed`: one time in four they
/// are cut off, else 1 … 128 bits are flipped, every other time one of them in the first 300 bytes, where it
/// does most harm.
inline QByteArray damaged(QByteArray bytes, unsigned seed)
{
    std::mt19937 random(seed);
    const auto upTo = [&random](qsizetype limit) { return qsizetype(random() % size_t(limit)); };
    if (seed % 4 == 0)
        return bytes.first(upTo(bytes.size()));
    const int count = 1 << upTo(8);
    for (int i = 0; i < count; ++i) {
        const bool isAtBeginning = i == 0 && seed % 2 == 0;
        const qsizetype place = upTo(isAtBeginning ? std::min<qsizetype>(bytes.size(), 300) : bytes.size());
        bytes[place] = char(bytes[place] ^ (1 << upTo(8)));
    }
    return bytes;
}
