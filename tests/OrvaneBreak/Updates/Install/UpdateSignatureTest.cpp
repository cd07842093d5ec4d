// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdateSignature.h"

#include "Support/Signer.h"
#include "Support/TestProgram.h"

#include <QTest>

using namespace UpdateSignature;

namespace {

constexpr auto signatureEncoding = QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals;

} // namespace

class UpdateSignatureTest : public QObject
{
    Q_OBJECT

    const Signer m_makers;
    const QByteArray m_archive = QByteArray(100'000, 'a');
    const QByteArray m_signature = QByteArray::fromBase64(m_makers.sign(m_archive), signatureEncoding);
    const Ed25519::PublicKey m_key =
        parsePublicKey(m_makers.publicKeyBase64()).value_or(Ed25519::PublicKey{});

private Q_SLOTS:
    void aValidSignature() const
    {
        QVERIFY(verify(m_archive, m_archive.size(), m_signature, m_key));
        QVERIFY(verify({}, 0, QByteArray::fromBase64(m_makers.sign({}), signatureEncoding), m_key));
    }

    void anotherArchive() const
    {
        for (const qsizetype place : {qsizetype(0), m_archive.size() / 2, m_archive.size() - 1}) {
            QByteArray changed = m_archive;
            changed[place] = 'b';
            QVERIFY(!verify(changed, changed.size(), m_signature, m_key));
        }
        QVERIFY(!verify({}, 0, m_signature, m_key));
    }

    void anotherLength() const
    {
        QVERIFY(!verify(m_archive, m_archive.size() - 1, m_signature, m_key));
        QVERIFY(!verify(m_archive, m_archive.size() + 1, m_signature, m_key));
        QVERIFY(!verify(m_archive, -1, m_signature, m_key));
        QVERIFY(!verify(QByteArrayView(m_archive).chopped(1), m_archive.size(), m_signature, m_key));
        QVERIFY(!verify(QByteArrayView(m_archive).chopped(1), m_archive.size() - 1, m_signature, m_key));
    }

    void anotherSignature() const
    {
        QByteArray changed = m_signature;
        changed[63] = static_cast<char>(changed.at(63) ^ 1);
        QVERIFY(!verify(m_archive, m_archive.size(), changed, m_key));
        QVERIFY(!verify(m_archive, m_archive.size(), m_signature.chopped(1), m_key));
        QVERIFY(!verify(m_archive, m_archive.size(), m_signature + 'x', m_key));
        QVERIFY(!verify(m_archive, m_archive.size(), {}, m_key));
        QVERIFY(!verify(m_archive, m_archive.size(), QByteArray(64, '\0'), Ed25519::PublicKey{}));
    }

    void anotherKey() const
    {
        const auto other = parsePublicKey(Signer().publicKeyBase64());
        QVERIFY(other);
        QVERIFY(!verify(m_archive, m_archive.size(), m_signature, *other));
    }

    static void keys_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<bool>("isKey");
        QTest::newRow("key") << QByteArray(32, 'k').toBase64() << true;
        QTest::newRow("with a line end") << QByteArray(32, 'k').toBase64() + '\n' << true;
        QTest::newRow("31 bytes") << QByteArray(31, 'k').toBase64() << false;
        QTest::newRow("33 bytes") << QByteArray(33, 'k').toBase64() << false;
        QTest::newRow("zeros") << QByteArray(32, '\0').toBase64() << false;
        QTest::newRow("empty") << QByteArray() << false;
        QTest::newRow("no base64") << QByteArray(44, '?') << false;
    }

    static void keys()
    {
        QFETCH(const QByteArray, text);
        QFETCH(const bool, isKey);
        QCOMPARE(parsePublicKey(text).has_value(), isKey);
    }
};

ORVANE_TEST(UpdateSignatureTest, TestProgram::NoApplication)
#include "UpdateSignatureTest.moc"
