#!/usr/bin/env bash
# Installs everything the build, the tests and the demo need; safe to run again.
# xml-security-c is rebuilt from Debian's own source package with Xalan (Debian's
# binary package has no XPath support) into a private prefix, cached between runs.
set -euo pipefail

PREFIX="${VQXML_XSEC_PREFIX:-$HOME/.cache/vqxml/xmlsec-c}"
SUDO=""
[ "$(id -u)" -eq 0 ] || SUDO="sudo"

PACKAGES=(
  build-essential cmake pkg-config dpkg-dev
  libxerces-c-dev libxalan-c-dev libssl-dev openssl
  googletest libgtest-dev libgmock-dev libbenchmark-dev
  xmlsec1 libxmlsec1-dev libxml2-dev
  python3 python3-lxml python3-xmlsec
  clang libclang-rt-14-dev
  default-jdk-headless libwss4j-java libxml-security-java libbcprov-java
  libcommons-logging-java libcommons-codec-java libslf4j-java
  junit5 mono-mcs mono-runtime libmono-i18n-cjk4.0-cil libnunit-cil-dev nunit-console
  python3-pytest python3-setuptools python3-venv
)

missing=()
for p in "${PACKAGES[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ "${#missing[@]}" -gt 0 ]; then
  echo "setup: installing ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  $SUDO apt-get update -qq
  $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi

# Bumped whenever the fixes below change, so that an older build is replaced.
FIXES_STAMP="$PREFIX/vqxml-fixes-4"
if [ -f "$PREFIX/lib/libxml-security-c.so.20" ] && [ -f "$FIXES_STAMP" ] && \
   grep -q '^#define XSEC_HAVE_XALAN' "$PREFIX/include/xsec/framework/XSECConfig.hpp" 2>/dev/null; then
  exit 0
fi

# Its compiler warnings would fill the screen: everything goes to a log, and the
# screen gets a line before, a line after, or the log's end when a step fails.
log="$PREFIX.build.log"
mkdir -p "$(dirname "$log")"
: > "$log"
echo "setup: building xml-security-c with Xalan into $PREFIX (a few minutes; log: $log)"
failed() {
  echo "setup: building xml-security-c failed ($1); the end of $log:" >&2
  tail -n 30 "$log" >&2
  exit 1
}
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
apt_dir="$work/apt"
mkdir -p "$apt_dir/sources" "$apt_dir/lists/partial"
: > "$apt_dir/empty.list"
codename="$(. /etc/os-release && echo "${VERSION_CODENAME:-bookworm}")"
echo "deb-src http://deb.debian.org/debian $codename main" > "$apt_dir/sources/src.list"
APT_OPTS=(-o Dir::Etc::SourceList="$apt_dir/empty.list"
          -o Dir::Etc::SourceParts="$apt_dir/sources"
          -o Dir::State::Lists="$apt_dir/lists")
apt-get "${APT_OPTS[@]}" update >>"$log" 2>&1 || failed "apt-get update"
( cd "$work" && apt-get "${APT_OPTS[@]}" source xml-security-c ) >>"$log" 2>&1 || failed "apt-get source"
src="$(find "$work" -maxdepth 1 -type d -name 'xml-security-c-*' | head -n1)"
[ -n "$src" ] || failed "no source folder"
# The inclusive canonicalizer looks for a namespace declaration on the nearest
# output ancestor without checking that it is an element: when that ancestor is
# the document (a node-set without the document element, as the national
# tax-invoice XPath makes), it reads through a null attribute map and the process
# dies. The library canonicalizes such node-sets itself; this keeps the
# transforms still left to the engine from crashing on them.
c14n="$src/xsec/canon/XSECC14n20010315.cpp"
grep -q 'DOMNode \*pns = pmap->getNamedItem(a->getNodeName());' "$c14n" ||
  failed "the source differs from the one the fixes were made for"
sed -i 's/DOMNode \*pns = pmap->getNamedItem(a->getNodeName());/DOMNode *pns = pmap != NULL ? pmap->getNamedItem(a->getNodeName()) : NULL;/' "$c14n"
# The namespace expander frees the entries it made only when asked to undo them;
# the parser transform (an XPath after octets) deletes it without that, so every
# such transform leaked them. Its destructor frees what is left.
expander="$src/xsec/utils/XSECNameSpaceExpander.cpp"
grep -q '^XSECNameSpaceExpander::~XSECNameSpaceExpander() {$' "$expander" ||
  failed "the source differs from the one the fixes were made for"
sed -i 's/^XSECNameSpaceExpander::~XSECNameSpaceExpander() {$/&\n\tfor (NameSpaceEntryListVectorType::size_type i = 0; i < m_lst.size(); ++i)\n\t\tdelete m_lst[i];/' "$expander"
# The engine's buffers grow by 1 KB at a time, so building a large value in one
# (the canonical form of a long text, a base64 value) copies it again for every
# kilobyte: a 16 MB text took over a minute. They grow by half their size instead.
buffer="$src/xsec/utils/XSECSafeBuffer.cpp"
grep -q '^	XMLSize_t newBufferSize = size + DEFAULT_SAFE_BUFFER_SIZE;$' "$buffer" ||
  failed "the source differs from the one the fixes were made for"
sed -i 's/^	XMLSize_t newBufferSize = size + DEFAULT_SAFE_BUFFER_SIZE;$/	XMLSize_t newBufferSize = size + (size \/ 2 > DEFAULT_SAFE_BUFFER_SIZE \&\& size \/ 2 < XERCES_SIZE_MAX - size ? size \/ 2 : DEFAULT_SAFE_BUFFER_SIZE);/' "$buffer"
# An X509Data may name several certificates (an EncryptedKey's recipient with
# the CAs above it). The engine keeps one subject name and one issuer and serial,
# and overwrote the decoded copy for every further one without freeing it. It
# keeps the first instead; the library reads the others from the document.
keyinfo="$src/xsec/dsig/DSIGKeyInfoX509.cpp"
[ "$(grep -c '^				mp_X509\(SubjectName\|IssuerName\) = decodeDName(child->getNodeValue());$' "$keyinfo")" = 2 ] &&
  grep -q '^				mp_X509SerialNumber = child->getNodeValue();$' "$keyinfo" ||
  failed "the source differs from the one the fixes were made for"
sed -i 's/^\(\t*\)\(mp_X509\(SubjectName\|IssuerName\|SerialNumber\)\) = \(decodeDName(child->getNodeValue())\|child->getNodeValue()\);$/\1if (\2 == NULL)\n\1\t\2 = \4;/' "$keyinfo"
(
  cd "$src"
  ./configure --prefix="$PREFIX" --with-xalan=/usr --without-nss --disable-static || exit 1
  make -j"$(nproc)" || exit 1
  make install
) >>"$log" 2>&1 || failed "configure, make or make install"
grep -q '^#define XSEC_HAVE_XALAN' "$PREFIX/include/xsec/framework/XSECConfig.hpp" ||
  failed "built without Xalan"
touch "$FIXES_STAMP"
echo "setup: xml-security-c ready in $PREFIX ($(grep -c 'warning:' "$log" || true) compiler warnings in $log)"
