#pragma once

namespace halvern {

/// Who is told how far a long piece of work is, and may end it: a job's log, a terminal, a window.
/// Work that reports takes a pointer to one; null means that nobody watches.
class Progress {
public:
    virtual ~Progress() = default;

    /// A new piece of work begins, at 0 percent.
    virtual void Start(const char* caption) = 0;
    /// `percent` of it is done, 0 … 100 and never falling; called when the number changes. False
    /// asks the work to stop, which then fails.
    [[nodiscard]] virtual bool Update(int percent) = 0;
    /// The piece of work is over, whether it was finished or not.
    virtual void Finish() = 0;
};

/// One piece of work on a Progress that may be null: starts it, counts, and finishes it in the end.
class ProgressStep {
public:
    ProgressStep(Progress* progress, const char* caption) : progress_(progress) {
        if (progress_) progress_->Start(caption);
    }
    ~ProgressStep() {
        if (progress_) progress_->Finish();
    }
    ProgressStep(const ProgressStep&) = delete;
    ProgressStep& operator=(const ProgressStep&) = delete;

    /// Reports `first` … `last` percent for `done` of `total`. False when the work shall stop.
    [[nodiscard]] bool reach(long long done, long long total, int first = 0, int last = 100) {
        if (!progress_ || total <= 0) return true;
        const int percent = first + static_cast<int>(done * (last - first) / total);
        if (percent == percent_) return true;
        percent_ = percent;
        return progress_->Update(percent);
    }

private:
    Progress* progress_;
    int percent_ = 0;
};

}  // namespace halvern
