// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>
#include <memory>
#include <utility>

namespace ostrelle {

/// Tells work that has waited whether it is still wanted. The end of the object overtakes all work, too. For
/// the thread of the event loop only.
class Overtaking {
public:
    /// A moment; work keeps the one at which it began.
    class Mark {
    public:
        Mark() = default; ///< overtaken
        explicit Mark(std::shared_ptr<const quint64> count) : m_count(std::move(count)), m_begin(*m_count) {}

        bool isOvertaken() const { return !m_count || *m_count != m_begin; }
        bool operator==(const Mark&) const = default;

    private:
        std::shared_ptr<const quint64> m_count;
        quint64 m_begin = 0;
    };

    Overtaking() = default;
    ~Overtaking() { overtake(); }
    Overtaking(const Overtaking&) = delete;
    Overtaking& operator=(const Overtaking&) = delete;

    Mark mark() const { return Mark(m_count); }
    /// Overtakes all work that has a mark so far.
    void overtake() { ++*m_count; }

private:
    std::shared_ptr<quint64> m_count = std::make_shared<quint64>(0);
};

} // namespace ostrelle
