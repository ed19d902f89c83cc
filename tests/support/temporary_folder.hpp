// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

/// A fresh folder that goes away, with what is in it, at the end of the scope.
class TemporaryFolder {
public:
    TemporaryFolder()
        : path_("/tmp/corvane-test-XXXXXX")
    {
        if (mkdtemp(path_.data()) == nullptr)
            throw std::runtime_error("mkdtemp");
    }
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& path() const
    {
        return path_;
    }

private:
    std::string path_;
};
