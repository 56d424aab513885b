// Where the library reaches past the public interfaces of Xerces-C, Xalan-C and
// xml-security-c, and the versions that contact was written for. Every file that
// includes a private upstream header or replaces an upstream behaviour includes
// this one, so a different upstream version fails the build here instead of
// misbehaving quietly.
//
// Private Xerces-C headers (the DOM implementation classes, the scanner) are used
// only under core/adapter/.
//
// Upstream behaviour replaced, and the test that shows the replacement holds:
// | upstream behaviour                                      | replaced by                           | test                                                   |
// |---------------------------------------------------------|---------------------------------------|--------------------------------------------------------|
// | XercesDOMParser links nodes through checked DOM appends | adapter/QuickDOMParser, DomLinking    | QuickDOMParserTest.BuildsTheTreeXercesBuilds           |
// | DOMLSSerializer writes a node                           | adapter/DomWriter                     | DomWriter.EveryTestAndInteropDocumentComesOutAsXercesWritesIt |
// | XSECException clamps types above 58                     | core/VQXMLException                   | ErrorInfo.EmptyUntilAFailureWhoseTextIsCopiedByTheLengthRuleAndSurvivesSuccess |
// | SignedInfo check ignores an exclusive PrefixList         | dsig/SignedInfoCanonicalization       | InteropSamples.SignedInfoPrefixListIsHonoured          |
// | HMAC output truncated to any length                     | engine/HMACSignatureHandler           | HmacLength.AtLeastEightyBitsAndHalfTheMac              |
// | DSA only with a 160-bit q; no RSA-PSS; ECDSA r||s length | engine/EvpSignatureHandler            | SignatureAttacks.RefusedWithTheirReason                |
// | XPath after enveloped-signature sees the Signature again | dsig/EngineXPath                      | XPathFilter.AgreesWithXmlsec/after_enveloped_general_engine |
// | Triple DES and Korean CBC ciphers, slow on large data   | engine/TripleDesCipherHandler, KoreanCipherHandler | XmlEncryptionHandlers.WrongKeysAreRefusedCleanly |
// | URI resolver fetches http: and file: references         | engine/VQXMLURIResolver               | HostileSignatures.NothingOutsideTheDocumentIsReadWhenVerifying |
// | RetrievalMethod, Manifest followed without bound; XSLT, | engine/KeyInfoGuard                   | HostileMessages.EveryEntryPointRefusesEachPieceAlikeWithoutReachingOut |
// | RetrievalMethod and CipherReference transforms run      |                                       |                                                        |
// | Decrypted content parsed into a second document         | engine/XencFragmentParser             | InPlace.NamesTakeTheNamespacesInScope                  |
// | A text value is copied in (the CipherValue's megabytes) | adapter/TextRoom                      | XmlsecDecrypts.ToTheOriginalBytes                      |
// | C14N dereferences a null attribute map (source fix)     | scripts/setup.sh                      | HostileSignatures.NodeSetsWithoutTheDocumentElement    |
// | Namespace expander leaks its entries (source fix)       | scripts/setup.sh                      | transform_chain_fuzzer corpus under ASan               |
// | Buffers grow 1 KB at a time, quadratic (source fix)     | scripts/setup.sh                      | LargeDocument.OneLongTextValueSignsAndVerifiesThroughTheEngine |
// | ATTLIST defaults rebuilt per declaration, entities      | adapter/BoundedDOMParser              | HostileDocuments.EveryLoaderGivesItsStatusAndStaysUsable |
// | expanded without a size bound                           |                                       |                                                        |
// | Key-information names decoded in quadratic time         | engine/KeyInfoGuard (length bound)    | HostileSignatures.WhatAStrangerMayNotAskOfTheVerifier  |
#ifndef VQXML_CORE_ADAPTER_UPSTREAM_HPP
#define VQXML_CORE_ADAPTER_UPSTREAM_HPP

#include <xalanc/Include/XalanVersion.hpp>
#include <xercesc/util/XercesVersion.hpp>
#include <xsec/framework/XSECVersion.hpp>

static_assert(XERCES_VERSION_MAJOR == 3 && XERCES_VERSION_MINOR == 2,
              "core/adapter was written for Xerces-C 3.2: check its private-header use and the table above");
static_assert(XSEC_VERSION_MAJOR == 2 && XSEC_VERSION_MEDIUM == 0 && XSEC_VERSION_MINOR == 4,
              "the engine extension was written for xml-security-c 2.0.4: check the table above");
static_assert(XALAN_VERSION_MAJOR == 1 && XALAN_VERSION_MINOR == 12,
              "the engine extension was written for Xalan-C 1.12");

#endif
