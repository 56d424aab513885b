// Public root certificates of the Korean national (KISA) and government (GPKI)
// PKIs, as published, byte for byte; their SHA-256 fingerprints are checked by
// the tests. Verification checks their validity like any certificate's: KISA
// RootCA 1 expired on 2025-08-24 and stays in, so that a certificate under it is
// refused as expired rather than as of an unknown issuer.
//
// GPKIRootCA (2008; serial 48479209034CB66F1005525650458B7B; SHA-256 of DER
// 4A072CFA8B4F0AC060C0DB6D31EBF32475DAA27D55773CD76D0F0ED5CF8F1BA4) belongs
// fourth, after GPKIRootCA1. No copy of it could be obtained yet, so it is left
// out rather than guessed: certificates under it are refused until its exact
// bytes (910 of DER, 1216 of base64) are added below.
#include "pki/TrustAnchors.hpp"

namespace vqxml {

namespace {
// C=KR, CN=KISA RootCA 4 (1188 base64 characters)
const char kKisaRootCa4[] =
    "MIIDdTCCAl2gAwIBAgIBATANBgkqhkiG9w0BAQsFADBkMQswCQYDVQQGEwJLUjENMAsGA1UECgwES0lTQTEuMCwGA1UECwwl"
    "S29yZWEgQ2VydGlmaWNhdGlvbiBBdXRob3JpdHkgQ2VudHJhbDEWMBQGA1UEAwwNS0lTQSBSb290Q0EgNDAeFw0xMDA3MTIw"
    "OTI2MjFaFw0zMDA3MTIwOTI2MjFaMGQxCzAJBgNVBAYTAktSMQ0wCwYDVQQKDARLSVNBMS4wLAYDVQQLDCVLb3JlYSBDZXJ0"
    "aWZpY2F0aW9uIEF1dGhvcml0eSBDZW50cmFsMRYwFAYDVQQDDA1LSVNBIFJvb3RDQSA0MIIBIjANBgkqhkiG9w0BAQEFAAOC"
    "AQ8AMIIBCgKCAQEAxepOYmiYpxFdu6SCSVgMCrAgswLbRSYg/+0tah/CjIHMn2Ja506fpsyfhyN/pX4nfEFXhQsVtTaGNAkB"
    "+/cfrPOaupueh4pbwZc7KYo4maUtK7tDj3F6iuxaa7jwAWW2/FKY0jQfBkVV9V+jfPVDJokEFGNn63zYiLcIQBaoPcQ/mJ8P"
    "KR+gGBhgUFxIWKQvi+5croilzcu+Igm/nv93uqdBUCroBo3ttTo+IfUHuj13nOO8VbABGRA53JPV4V3iDQBG3WPgSVjak/AQ"
    "f7MP8F7HyGr42/oFI8Lb+O9W4MWGMamyYkidxGBdrcb61qcjQQnDNWrbFsOrmKwJYv28MwIDAQABozIwMDAdBgNVHQ4EFgQU"
    "yNCOx0muHyBCskt/E8l3WAyhzcEwDwYDVR0TAQH/BAUwAwEB/zANBgkqhkiG9w0BAQsFAAOCAQEAm/GuDMpPb886Fk8nTUHV"
    "aG8gWq8JwN2sONS84IrQOn0KqM1zYGXuXhv8H2HKeBahLKRBQKfXqfo9WSdtdTLw3Awo1EGVQDnMYpaNMHI3fulEJ8ZCWwPC"
    "zu4BsG583iYnG+54Oatjr5AUU0vZGMNBsMVkZf0aFg9PCJ0PSKg/iFQb48prJ0Iy5k7KXllIisQNuZlyreATdtNU0ajYW9WH"
    "XFYC/warjyd7bSz9KmUuMjQ3xA5LW3dkC1QLa+RHgg5lNlMNMr+sq3+cFY8LncxMby9jqL7Wx37fjdqbQ5kwjHcnSHFe9AHu"
    "6GSd/425e2ApHFXDYnh6+m0bGkNNrg8/GQ==";

// C=KR, CN=KISA RootCA 1 (1184 base64 characters)
const char kKisaRootCa1[] =
    "MIIDczCCAlugAwIBAgIBBDANBgkqhkiG9w0BAQUFADBkMQswCQYDVQQGEwJLUjENMAsGA1UECgwES0lTQTEuMCwGA1UECwwl"
    "S29yZWEgQ2VydGlmaWNhdGlvbiBBdXRob3JpdHkgQ2VudHJhbDEWMBQGA1UEAwwNS0lTQSBSb290Q0EgMTAeFw0wNTA4MjQw"
    "ODA1NDZaFw0yNTA4MjQwODA1NDZaMGQxCzAJBgNVBAYTAktSMQ0wCwYDVQQKDARLSVNBMS4wLAYDVQQLDCVLb3JlYSBDZXJ0"
    "aWZpY2F0aW9uIEF1dGhvcml0eSBDZW50cmFsMRYwFAYDVQQDDA1LSVNBIFJvb3RDQSAxMIIBIDANBgkqhkiG9w0BAQEFAAOC"
    "AQ0AMIIBCAKCAQEAvATk+hM58DSWIGtsaLv623f/J/es7C/n/fB/bW+MKs0lCVsk9KFo/CjsySXirO3eyDOE9bClCTqnsUdI"
    "xcxPjHmc+QZXfd3uOPbPFLKc6tPAXXdi8EcNuRpAU1xkcK8IWsD3z3X5bI1kKB4g/rcbGdNaZoNy4rCbvdMlFQ0yb2Q3lIVG"
    "yHK+d9VuHygvx2nt54OJM1jT3qC/QOhDUO7cTWu8peqmyGGO9cNkrwYV3CmLP3WMvHFE2/yttRcdbYmDz8Yzvb9Fov4Kn6MR"
    "Xw+5H5wawkbMnChmn3AmPC7fqoD+jMUECSVPzZNHPDfqAmeS/vwiJFys0izgXAEzisEZ2wIBA6MyMDAwHQYDVR0OBBYEFL+2"
    "J9gDWnZlTGEBQVYx5Yt7OtnMMA8GA1UdEwEB/wQFMAMBAf8wDQYJKoZIhvcNAQEFBQADggEBABOvUQveimpb5poKyLGQSk6h"
    "Ap3MiNKrZr097LuxQpVqslxa/6FjZJapaBV/JV6K+KRzwYCKhQoOUugy50X4TmWAkZl0Q+VFnUkq8JSV3enhMNITbslOsXfl"
    "BM+tWh6UCVrXPAgcrnrpFDLBRa3SJkhyrKhB2vAhhzle3/xk/2F0KpzZm4tfwjeT2KM3LzuTa7IbB6d/CVDv0zq+IWuKkDsn"
    "SlFOa56ch534eJAx7REnxqhZvvwYC/uOfi5C4e3nCSG9uRPFVmf0JqZCQ5BEVLRxm3bkGhKsGigA35vB1fjbXKP4krG9tNT5"
    "UNkAAk/bg9ART6RCVmE6fhMy04Qfybo=";

// C=KR, CN=GPKIRootCA1 (1156 base64 characters)
const char kGpkiRootCa1[] =
    "MIIDXTCCAkWgAwIBAgIBATANBgkqhkiG9w0BAQsFADBQMQswCQYDVQQGEwJLUjEcMBoGA1UECgwTR292ZXJubWVudCBvZiBL"
    "b3JlYTENMAsGA1UECwwER1BLSTEUMBIGA1UEAwwLR1BLSVJvb3RDQTEwHhcNMTEwODAzMDY1MjMwWhcNMzEwODAzMDY1MjMw"
    "WjBQMQswCQYDVQQGEwJLUjEcMBoGA1UECgwTR292ZXJubWVudCBvZiBLb3JlYTENMAsGA1UECwwER1BLSTEUMBIGA1UEAwwL"
    "R1BLSVJvb3RDQTEwggEiMA0GCSqGSIb3DQEBAQUAA4IBDwAwggEKAoIBAQCh/m8EBbDJhGQyN2+g5dTlsgjtaRKqhgj3gkYK"
    "BgtuXsXkaTVxbf99AvbN3QE8+WCIaPJUd0091UGmLzaBVyW4ct+iUNrX/FXyzjafbNbbl1nfHhaZhkiOTVQhmY5zuj96evEt"
    "JMevnxe6iRADOPWnqp+CxT2IzcSFkQCq7L2qn8hU2/LpXUvnAYglJZi8t6Ef+r03P1r8dA5OzZ8yV3qhD1R1wsNQtCzMgwcE"
    "rFRZhFZYuxpfmS5y0fZW0seeTjcdxHiR3whYI5U6AI7DjdWIrT9Cd9ByV4aevkBhqkePPIYGmUPXnnqCkdHdnzkMH0WP9TBh"
    "D2jTXZKdcFtTyEJrAgMBAAGjQjBAMB0GA1UdDgQWBBR4A+sMjKbTVXWkh7Tr0ZpmD0xzizAOBgNVHQ8BAf8EBAMCAQYwDwYD"
    "VR0TAQH/BAUwAwEB/zANBgkqhkiG9w0BAQsFAAOCAQEARGJWATwo81x7UEQugNbicL8IWXoV51SZVH3kz49fNUjVoq1n2yzf"
    "aMddlblbflDNObp/68DxTlSXCeqFHkgi/WvyVHERRECXnF0WeeelI+Q8XdF3IJZLT3u5Ss0VAB2loCuC+4hBWSRQu2WZu2Yk"
    "s9eBN0x6NmtopRmnf2d6VrcFA+WOgUeTjXiDkG52IaPw0w1uTfmRw5epky5idyY2bfJ1JeVUINMJnOWpgLkOH3xxakoD8F1F"
    "bi6C3t7MmKupojUq/toUDms6zTk3DIkcwd7PALNWL5U8TxNLoroTHSf/lzaOv3o9KDRa0FQo58bPI7MdbRWE4F3mS/ZIrnv7"
    "jQ==";

}  // namespace

const TrustAnchor kTrustAnchors[] = {
    {"KISA RootCA 4", kKisaRootCa4, sizeof kKisaRootCa4 - 1},
    {"KISA RootCA 1", kKisaRootCa1, sizeof kKisaRootCa1 - 1},
    {"GPKIRootCA1", kGpkiRootCa1, sizeof kGpkiRootCa1 - 1},
};

const int kTrustAnchorCount = sizeof kTrustAnchors / sizeof kTrustAnchors[0];

}  // namespace vqxml
