#include "support/Text.h"

#include <cstddef>
#include <limits>

namespace vellux {

std::vector<std::string> split(std::string_view strText, std::string_view strSeparator) {
    std::vector<std::string> pieces;
    std::size_t nStart = 0;
    if (!strSeparator.empty()) {
        for (std::size_t nFound = strText.find(strSeparator); nFound != std::string_view::npos;
             nFound = strText.find(strSeparator, nStart)) {
            pieces.emplace_back(strText.substr(nStart, nFound - nStart));
            nStart = nFound + strSeparator.size();
        }
    }
    pieces.emplace_back(strText.substr(nStart));
    return pieces;
}

std::string replaceAll(std::string_view strText, std::string_view strFind, std::string_view strReplacement) {
    std::string strResult;
    bool bFirst = true;
    for (const std::string& strPiece : split(strText, strFind)) {
        if (!bFirst)
            strResult += strReplacement;
        strResult += strPiece;
        bFirst = false;
    }
    return strResult;
}

std::string toLower(std::string_view strText) {
    std::string strResult(strText);
    for (char& c : strResult)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return strResult;
}

bool isUtf8(std::string_view bytes) {
    // Per lead byte: how many bytes follow, and the range of the first of them, which is what excludes
    // overlong forms, surrogates and everything above U+10FFFF (RFC 3629, section 4).
    struct Row {
        unsigned char byFirst, byLast;
        unsigned char nFollowing;
        unsigned char byLowest, byHighest;
    };
    static constexpr Row kRows[] = {
        {0x00, 0x7F, 0, 0, 0},       {0xC2, 0xDF, 1, 0x80, 0xBF}, {0xE0, 0xE0, 2, 0xA0, 0xBF},
        {0xE1, 0xEC, 2, 0x80, 0xBF}, {0xED, 0xED, 2, 0x80, 0x9F}, {0xEE, 0xEF, 2, 0x80, 0xBF},
        {0xF0, 0xF0, 3, 0x90, 0xBF}, {0xF1, 0xF3, 3, 0x80, 0xBF}, {0xF4, 0xF4, 3, 0x80, 0x8F},
    };
    std::size_t n = 0;
    while (n < bytes.size()) {
        const auto byLead = static_cast<unsigned char>(bytes[n++]);
        const Row* pRow = nullptr;
        for (const Row& row : kRows)
            if (byLead >= row.byFirst && byLead <= row.byLast)
                pRow = &row;
        if (pRow == nullptr || bytes.size() - n < pRow->nFollowing)
            return false;
        for (int k = 0; k < pRow->nFollowing; ++k) {
            const auto by = static_cast<unsigned char>(bytes[n++]);
            if (by < (k == 0 ? pRow->byLowest : 0x80) || by > (k == 0 ? pRow->byHighest : 0xBF))
                return false;
        }
    }
    return true;
}

std::int64_t integerValue(std::string_view strText) {
    constexpr std::int64_t kLowest = std::numeric_limits<std::int64_t>::min();
    constexpr std::int64_t kHighest = std::numeric_limits<std::int64_t>::max();
    std::size_t n = strText.find_first_not_of(" \t\n\v\f\r");
    if (n == std::string_view::npos)
        return 0;
    const bool bNegative = strText[n] == '-';
    if (bNegative || strText[n] == '+')
        ++n;
    std::int64_t nValue = 0; // kept negative: that side of the range reaches one further
    for (; n < strText.size() && strText[n] >= '0' && strText[n] <= '9'; ++n) {
        const std::int64_t nDigit = strText[n] - '0';
        if (nValue < (kLowest + nDigit) / 10)
            return bNegative ? kLowest : kHighest;
        nValue = nValue * 10 - nDigit;
    }
    if (bNegative)
        return nValue;
    return nValue == kLowest ? kHighest : -nValue;
}

} // namespace vellux
