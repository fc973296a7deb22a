#pragma once

#include <zaltag/records/ZALTagCustomProperty.h>

#include <memory>
#include <utility>

/// The mark of a file whose audio was processed, with the name of the backup of the untouched file. It has no
/// algorithm: the class-level members are the base's and throw.
class ZALTAG_EXPORT ZALTagVelvetCascade : public ZALTagCustomProperty {
  public:
    ZALTagVelvetCascade() = default;
    ZALTagVelvetCascade(std::shared_ptr<const std::string> backupFileName, bool isProcessed)
        : backupFileName_(std::move(backupFileName)), isProcessed_(isProcessed) {}
    static ZALTagVelvetCascade tagWithBackupFileName(std::shared_ptr<const std::string> backupFileName,
                                                     bool isProcessed) {
        return {std::move(backupFileName), isProcessed};
    }
    static ZALTagVelvetCascade initWithBackupFileName(std::shared_ptr<const std::string> backupFileName,
                                                      bool isProcessed) {
        return tagWithBackupFileName(std::move(backupFileName), isProcessed);
    }
    static std::optional<ZALTagVelvetCascade> propertyWithJSONDict(
        const std::optional<ZALJSONValue>& dictionary) {
        return recordWithJSONDict<ZALTagVelvetCascade>(dictionary);
    }
    static std::optional<ZALTagVelvetCascade> initWithJSONDict(
        const std::optional<ZALJSONValue>& dictionary) {
        return recordWithJSONDict<ZALTagVelvetCascade>(dictionary);
    }

    /// The backup's file name, shared between the copies of this record; null when there is none, by default.
    const std::shared_ptr<const std::string>& backupFileName() const { return backupFileName_; }
    void setBackupFileName(std::shared_ptr<const std::string> backupFileName) {
        backupFileName_ = std::move(backupFileName);
    }

    /// Whether the file was processed; false by default.
    bool isProcessed() const { return isProcessed_; }
    void setIsProcessed(bool isProcessed) { isProcessed_ = isProcessed; }

    /// "backupFileName", empty for null, and "isProcessed", nothing else; never null.
    std::optional<ZALJSONValue> JSONDict() const override;
    /// An empty name reads as null. The algorithm stays as it is.
    void updateWithJSONDict(const ZALJSONValue& dictionary) override;

    /// Equal algorithm, the very same name object (or two null names) and equal isProcessed(): records read
    /// from two files are unequal even when their names read alike.
    bool isEqualToTagVelvetCascade(const ZALTagVelvetCascade& other) const;
    bool isEqual(const ZALTagCustomProperty& other) const override;
    std::size_t hash() const override;

  private:
    std::shared_ptr<const std::string> backupFileName_;
    bool isProcessed_ = false;
};
