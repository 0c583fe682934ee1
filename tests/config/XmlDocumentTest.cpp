// The XML document extension: parsing from memory, printing, and files that
// go through the device root.
#include "ConfigFixture.h"

#include <string>

#include "config/SensorXml.h"

namespace configtest {
namespace {

using XmlDocumentTest = ConfigTest;

TEST_F(XmlDocumentTest, LoadMemParsesOrLeavesNothing) {
    TiXmlDocumentEx objDoc;
    EXPECT_TRUE(objDoc.LoadMem("<a x=\"1\"><b/></a>", TIXML_ENCODING_UTF8));
    ASSERT_NE(objDoc.RootElement(), nullptr);
    EXPECT_STREQ(objDoc.RootElement()->Attribute("x"), "1");

    // A failed parse drops the earlier document and whatever was read before the fault.
    EXPECT_FALSE(objDoc.LoadMem("<c><d></c>", TIXML_ENCODING_UTF8));
    EXPECT_EQ(objDoc.FirstChild(), nullptr);
    EXPECT_FALSE(objDoc.LoadMem("", TIXML_ENCODING_UTF8));
    EXPECT_FALSE(objDoc.LoadMem(nullptr, TIXML_ENCODING_UTF8));
    EXPECT_EQ(objDoc.FirstChild(), nullptr);
    EXPECT_TRUE(objDoc.LoadMem("<e/>", TIXML_ENCODING_UTF8));
    EXPECT_STREQ(objDoc.RootElement()->Value(), "e");
}

TEST_F(XmlDocumentTest, PrintedTextIsWhatASavedFileHolds) {
    TiXmlDocumentEx objDoc;
    ASSERT_TRUE(objDoc.LoadMem("<?xml version=\"1.0\"?><a x=\"1\"><b>t</b><c/></a><z/>",
                               TIXML_ENCODING_UTF8));
    std::string strText = "old";
    objDoc.getXmlString(strText);
    EXPECT_NE(strText.find("<b>t</b>"), std::string::npos);
    EXPECT_NE(strText.find("<z />"), std::string::npos);
    EXPECT_EQ(strText.find("old"), std::string::npos);

    ASSERT_TRUE(objDoc.SaveFile("/tmp/doc.xml"));
    EXPECT_EQ(m_objRoot.readFile("/tmp/doc.xml"), strText);
    // Byte for byte what the library itself writes.
    const std::string strLibrary = m_objRoot.hostPath("/tmp/lib.xml");
    ASSERT_TRUE(objDoc.TiXmlDocument::SaveFile(strLibrary.c_str()));
    EXPECT_EQ(m_objRoot.readFile("/tmp/lib.xml"), strText);
}

TEST_F(XmlDocumentTest, FilesAreDevicePaths) {
    m_objRoot.writeFile("/hd1/x.xml", "<r v=\"2\"/>");
    TiXmlDocumentEx objDoc;
    ASSERT_TRUE(objDoc.LoadFile("/hd1/x.xml", TIXML_ENCODING_UTF8));
    EXPECT_STREQ(objDoc.Value(), "/hd1/x.xml");
    objDoc.RootElement()->SetAttribute("v", 3);
    ASSERT_TRUE(objDoc.SaveFile());
    EXPECT_NE(m_objRoot.readFile("/hd1/x.xml").find("v=\"3\""), std::string::npos);

    EXPECT_FALSE(objDoc.LoadFile("/hd1/missing.xml", TIXML_ENCODING_UTF8));
    EXPECT_FALSE(objDoc.LoadFile("/hd1", TIXML_ENCODING_UTF8));
    EXPECT_FALSE(objDoc.LoadFile(nullptr, TIXML_ENCODING_UTF8));
}

TEST_F(XmlDocumentTest, DocumentFromMemoryHasNoFileToSave) {
    TiXmlDocumentEx objDoc;
    ASSERT_TRUE(objDoc.LoadMem("<r/>", TIXML_ENCODING_UTF8));
    EXPECT_FALSE(objDoc.SaveFile());
    EXPECT_FALSE(objDoc.SaveFile(""));
    EXPECT_FALSE(objDoc.SaveFile(nullptr));
}

} // namespace
} // namespace configtest
