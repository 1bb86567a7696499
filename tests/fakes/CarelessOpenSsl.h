// An OpenSSL that speaks what is not safe: what refuses it must be the transport.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

/// Must be made before anything uses OpenSSL.
struct CarelessOpenSsl {
    CarelessOpenSsl() {
        std::ofstream(strFile) << "openssl_conf=a\n[a]\nssl_conf=b\n[b]\nsystem_default=c\n[c]\n"
                                  "MinProtocol=TLSv1\nCipherString=DEFAULT@SECLEVEL=0\n";
        ::setenv("OPENSSL_CONF", strFile.c_str(), 1);
    }
    ~CarelessOpenSsl() { std::filesystem::remove(strFile); }
    const std::string strFile = testing::TempDir() + "openssl-" + std::to_string(::getpid());
};
