#pragma once

#include <fenestra/assertlog.h>

#include <string>
#include <utility>
#include <vector>

/// Collects the library's reports, as "source:line expression", while the object exists.
class Reports {
public:
    Reports() { WndSetAssertSink(&Keep, this); }
    ~Reports() { WndSetAssertSink(nullptr, nullptr); }
    Reports(Reports&&) = delete;

    /// The reports since the last call, in order.
    std::vector<std::string> Take() { return std::exchange(m_texts, {}); }

private:
    static void Keep(const WND_ASSERT_RECORD& record, void* self) {
        static_cast<Reports*>(self)->m_texts.push_back(std::string(record.szFile) + ":" +
                                                       std::to_string(record.ulLine) + " " + record.szExpression);
    }
    std::vector<std::string> m_texts;
};

using Texts = std::vector<std::string>;
